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
// Thread-safe. Lines go out at once as long as there are no more than 32 of them in 2 ms; those
// beyond are gathered until the 2 ms are over, and go out together. So a log costs next to nothing
// a line when there are most of them, and nothing wakes up while there are few. The rest of what
// standard error has not taken after a while is lost.
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
  [[nodiscard]] bool beginAnew() REQUIRES(mutex);
  void writeGathered() REQUIRES(mutex);

  const Later later;
  Mutex mutex;
  std::string gathered GUARDED_BY(mutex);
  bool flushComes GUARDED_BY(mutex) = false;
  // The time in which lines are counted, and how many went out in it.
  std::chrono::steady_clock::time_point begin GUARDED_BY(mutex);
  int linesSinceBegin GUARDED_BY(mutex) = 0;
};

}  // namespace quenlet
