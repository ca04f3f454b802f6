#pragma once

#include <filesystem>
#include <memory>
#include <optional>
#include <string>

#include "platform/counters/CounterStore.h"
#include "platform/counters/CounterValues.h"
#include "platform/files/DataProxy.h"
#include "platform/foundation/Mutex.h"
#include "platform/foundation/ProblemReporter.h"

namespace quenlet {

// Where a user's counters are, from the home directory.
inline constexpr char CountersPath[] = "Library/Logs/quenlet/counters.prom";

// Keeps counters in a file in the Prometheus text format, over restarts. Thread-safe.
//
// The file is read at the first count and replaced whole after each; nobody waits for that, and the
// file layer makes one write of what comes while another one is under way. A file that holds
// anything else is kept aside, and counting starts from nothing. While the file can be neither read
// nor kept aside it is left as it is: what is counted stays in memory, and each count tries again.
// Problems are told on standard error, with no lock held, so that a count never waits until another
// thread's line is written. What another process writes to the file meanwhile is lost.
class PrometheusCounterStore final : public CounterStore {
 public:
  // Touches no file yet.
  PrometheusCounterStore(std::filesystem::path path, std::shared_ptr<DataProxy> dataProxy);

  void setScalar(const std::string& key, std::int64_t value) override EXCLUDES(mutex);
  // A sample that would make the sum anything but a number, or the count too large to be read back,
  // is left out.
  void addSample(const std::string& key, double sample) override EXCLUDES(mutex);

 private:
  // What there is to tell of one count.
  struct Saving final {
    ErrorPtr problemOfReading;
    // Absent when the file has to stay.
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
