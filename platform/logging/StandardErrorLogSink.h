#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <string>

#include "platform/foundation/Mutex.h"
#include "platform/logging/StructuredLog.h"
#include "platform/scheduling/Scheduler.h"

namespace quenlet {

// Writes lines to standard error, in their order, so that those of several threads do not mix.
// Thread-safe. A line goes out at once, unless one went out within the last milliseconds: then it
// is gathered with those that follow, for 2 ms, and all go out together. So a log costs next to
// nothing per line when there are most of them, and nothing wakes up while there are none. The rest
// of what standard error has not taken after a while is lost.
class StandardErrorLogSink final : public LogSink,
                                   public std::enable_shared_from_this<StandardErrorLogSink> {
 public:
  // Runs a block once so many seconds have passed, on any thread.
  using Later = std::function<void(double delaySeconds, Block block)>;

  explicit StandardErrorLogSink(Later runLater) : later(std::move(runLater)) {}

  void write(const std::string& line) override EXCLUDES(mutex);
  // Writes what is gathered. To be called before the process ends.
  void flush() EXCLUDES(mutex);

 private:
  void writeGathered() REQUIRES(mutex);

  const Later later;
  Mutex mutex;
  std::string gathered GUARDED_BY(mutex);
  bool flushComes GUARDED_BY(mutex) = false;
  std::chrono::steady_clock::time_point lastWritten GUARDED_BY(mutex);
};

}  // namespace quenlet
