#pragma once

#include <functional>
#include <memory>
#include <thread>

#include "platform/scheduling/EventLoop.h"
#include "platform/scheduling/EventLoopScheduler.h"

namespace quenlet {

// The one thread that waits for the delayed blocks of all pool schedulers and hands each over when
// it is due; it never runs them itself. Thread-safe. The thread is started at construction and
// sleeps while nothing is due. A cancelled timer leaves nothing behind.
class TimerThread final {
 public:
  TimerThread();
  ~TimerThread();
  TimerThread(const TimerThread&) = delete;
  TimerThread& operator=(const TimerThread&) = delete;

  // Ends the thread. Drops blocks that are not due yet, and those added later. Do not call it on
  // that thread.
  void shutDown();

  // Once `delaySeconds` have passed, calls `submit` on the timer's thread with a block that runs
  // `block`, unless the returned token is cancelled before it starts. Timers for the same instant
  // are handed over in the order of their calls.
  [[nodiscard]] std::shared_ptr<Cancelable> afterDelay(double delaySeconds,
                                                       std::function<void(Block)> submit,
                                                       Block block);

 private:
  EventLoop loop;
  EventLoopScheduler timers;
  std::thread thread;
};

}  // namespace quenlet
