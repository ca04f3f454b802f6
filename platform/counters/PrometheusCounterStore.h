#pragma once

#include <filesystem>
#include <memory>
#include <mutex>
#include <string>

#include "platform/counters/CounterStore.h"
#include "platform/counters/CounterValues.h"
#include "platform/files/DataProxy.h"
#include "platform/foundation/Mutex.h"
#include "platform/foundation/ProblemReporter.h"

namespace quenlet {

// Keeps counters in a file in the Prometheus text format, over restarts. Thread-safe.
//
// The file is read before the first count and replaced whole after each; nobody waits for that, and
// the file layer makes one write of what comes while another one is under way. A file that cannot
// be read, or holds anything else, is kept aside, and counting starts from nothing. Problems are
// told on standard error. What another process writes to the file meanwhile is lost.
class PrometheusCounterStore final : public CounterStore {
 public:
  // Touches no file yet.
  PrometheusCounterStore(std::filesystem::path path, std::shared_ptr<DataProxy> dataProxy);

  void setScalar(const std::string& key, std::int64_t value) override EXCLUDES(mutex);
  // A sample that would make the sum anything but a number is left out.
  void addSample(const std::string& key, double sample) override EXCLUDES(mutex);

 private:
  void load() EXCLUDES(mutex);
  void write() REQUIRES(mutex);

  const std::filesystem::path path;
  const std::shared_ptr<DataProxy> dataProxy;
  const std::shared_ptr<ProblemReporter> problems;
  std::once_flag loaded;
  Mutex mutex;
  CounterValues values GUARDED_BY(mutex);
};

}  // namespace quenlet
