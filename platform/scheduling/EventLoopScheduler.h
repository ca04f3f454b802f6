#pragma once

#include <memory>

#include "platform/scheduling/EventLoop.h"
#include "platform/scheduling/Scheduler.h"

namespace quenlet {

// Runs blocks one by one, in submission order, on the thread that runs an event loop, and delayed
// blocks there when they are due (a timerfd: nothing wakes while nothing is due). Thread-safe. A
// block is never run inside performBlock(), not even on the loop's own thread. The loop outlives
// the scheduler; when the scheduler goes, delayed blocks are dropped and submitted ones still run.
class EventLoopScheduler final : public Scheduler {
 public:
  // Throws std::system_error when the system has no descriptor left.
  explicit EventLoopScheduler(EventLoop& eventLoop);
  ~EventLoopScheduler() override;

  void performBlock(Block block) override;
  [[nodiscard]] std::shared_ptr<Cancelable> afterDelay(double delaySeconds,
                                                       Block performBlock) override;

 private:
  struct Timers;
  EventLoop& loop;
  const std::shared_ptr<Timers> timers;
  const std::shared_ptr<EventLoop::Watch> watch;
};

}  // namespace quenlet
