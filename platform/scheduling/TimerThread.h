#pragma once

#include <functional>
#include <memory>
#include <thread>

#include "platform/scheduling/EventLoop.h"
#include "platform/scheduling/EventLoopScheduler.h"

namespace quenlet {

// The one thread that waits for the delayed blocks of all pool schedulers and hands each over when
// it is due. Thread-safe. The thread is started at construction and sleeps while nothing is due;
// a cancelled timer leaves nothing behind. It runs no block itself.
class TimerThread final {
 public:
  TimerThread();
  ~TimerThread();
  TimerThread(const TimerThread&) = delete;
  TimerThread& operator=(const TimerThread&) = delete;

  // Ends the thread; what is not due yet is dropped, and so is what is added later. Not to be
  // called on that thread.
  void shutDown();

  // Once `delaySeconds` have passed, gives a block to `submit` on the timer's thread. Running it
  // runs `block`, unless the returned token is cancelled before that starts. Timers of one instant
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
