#pragma once

#include <filesystem>
#include <memory>
#include <optional>
#include <string>

#include "platform/counters/CounterStore.h"
#include "platform/files/DataProxy.h"
#include "platform/foundation/Mutex.h"
#include "platform/foundation/ProblemReporter.h"

namespace quenlet {

// The file of a user's counters, relative to the home directory.
inline constexpr char CountersPath[] = "Library/Logs/quenlet/counters.prom";

// Keeps counters in a file in the Prometheus text format, over restarts. Thread-safe.
//
// The file is read at the first count and replaced after each. Callers do not wait for writes, and
// the file layer combines those that come during another one. A file with other content is kept
// aside, and counting starts at zero. While the file can be neither read nor kept aside, it stays:
// counts stay in memory, and each count tries again. Problems are reported on standard error after
// the lock, so a count never waits for another thread's line. Changes that another process makes to
// the file are overwritten.
class PrometheusCounterStore final : public CounterStore {
 public:
  // Does not access the file yet.
  PrometheusCounterStore(std::filesystem::path path, std::shared_ptr<DataProxy> dataProxy);

  void setScalar(const std::string& key, std::int64_t value) override EXCLUDES(mutex);
  // Ignores a sample that would make the sum infinite or NaN, or the count too large to read back.
  void addSample(const std::string& key, double sample) override EXCLUDES(mutex);

 private:
  // The outcome of one count, to be reported after the lock.
  struct Saving final {
    ErrorPtr problemOfReading;
    // Absent when the file must not be replaced.
    std::optional<Future<bool>> writing;
  };

  [[nodiscard]] Saving save() REQUIRES(mutex);
  [[nodiscard]] ErrorPtr load() REQUIRES(mutex);
  void report(const Saving& saving) EXCLUDES(mutex);

  const std::filesystem::path path;
  const std::shared_ptr<DataProxy> dataProxy;
  const std::shared_ptr<ProblemReporter> problems;
  Mutex mutex;
  bool loaded GUARDED_BY(mutex) = false;
  CounterValues values GUARDED_BY(mutex);
};

}  // namespace quenlet
