#pragma once

#include <memory>

#include "platform/scheduling/EventLoop.h"
#include "platform/scheduling/Scheduler.h"

namespace quenlet {

// Runs blocks one by one, in submission order, on the thread that runs an event loop; delayed
// blocks run there when they are due (a timerfd, so nothing wakes before that). Thread-safe.
// performBlock() never runs the block itself, not even on the loop's own thread. The loop outlives
// the scheduler. Destroying the scheduler drops delayed blocks; submitted ones still run.
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
