#include "platform/scheduling/EventLoopScheduler.h"

#include <sys/epoll.h>
#include <sys/timerfd.h>

#include <cerrno>
#include <optional>
#include <system_error>
#include <utility>

#include "platform/foundation/FileDescriptor.h"
#include "platform/foundation/Mutex.h"
#include "platform/scheduling/CancelableBlock.h"
#include "platform/scheduling/TimerQueue.h"
#include "platform/scheduling/runGuarded.h"

namespace quenlet {

using std::chrono::steady_clock;

// The delayed blocks and the timerfd that rings for the earliest of them.
struct EventLoopScheduler::Timers {
  Timers() : timer(::timerfd_create(CLOCK_MONOTONIC, TFD_CLOEXEC | TFD_NONBLOCK)) {
    if (!timer.isOpen()) throw std::system_error(errno, std::generic_category(), "make a timer");
  }

  TimerQueue::Key add(std::chrono::nanoseconds delay, Block block) EXCLUDES(mutex) {
    MutexLock lock(mutex);
    const auto key = queue.add(steady_clock::now() + delay, std::move(block));
    if (*queue.earliest() == key.first) arm();
    return key;
  }

  // Leaves the timer as it is: at worst it rings once for nothing.
  void remove(const TimerQueue::Key& key) EXCLUDES(mutex) {
    Block dropped;  // outlives the lock
    MutexLock lock(mutex);
    dropped = queue.remove(key);
  }

  Block takeDue(steady_clock::time_point now) EXCLUDES(mutex) {
    MutexLock lock(mutex);
    return queue.takeDue(now);
  }

  // Runs the blocks that are due now. A block that they add without delay comes in the next turn of
  // the loop, so others are not starved.
  void ring() EXCLUDES(mutex) {
    const auto now = steady_clock::now();
    while (const Block block = takeDue(now)) runGuarded(block);
    MutexLock lock(mutex);
    arm();
  }

  // The steady clock is CLOCK_MONOTONIC; an instant in the past rings at once. Setting the timer
  // also clears its readiness, so the timerfd need not be read.
  void arm() REQUIRES(mutex) {
    itimerspec setting{};  // all zero switches the timer off
    if (const auto due = queue.earliest()) {
      const auto instant = due->time_since_epoch();
      const auto seconds = std::chrono::floor<std::chrono::seconds>(instant);
      setting.it_value.tv_sec = seconds.count();
      setting.it_value.tv_nsec = std::chrono::nanoseconds(instant - seconds).count();
    }
    ::timerfd_settime(timer.get(), TFD_TIMER_ABSTIME, &setting, nullptr);
  }

  const FileDescriptor timer;
  Mutex mutex;
  TimerQueue queue GUARDED_BY(mutex);
};

EventLoopScheduler::EventLoopScheduler(EventLoop& eventLoop)
    : loop(eventLoop),
      timers(std::make_shared<Timers>()),
      watch(loop.watch(timers->timer.get(), EPOLLIN,
                       [held = timers](std::uint32_t) { held->ring(); })) {}

EventLoopScheduler::~EventLoopScheduler() { watch->cancel(); }

void EventLoopScheduler::performBlock(Block block) { loop.post(std::move(block)); }

std::shared_ptr<Cancelable> EventLoopScheduler::afterDelay(double delaySeconds,
                                                           Block performBlock) {
  const auto waiting = std::make_shared<CancelableBlock>(std::move(performBlock));
  const auto key = timers->add(TimerQueue::duration(delaySeconds), [waiting] { waiting->run(); });
  return std::make_shared<CancelBlock>([weak = std::weak_ptr<Timers>(timers), waiting, key] {
    waiting->cancel();
    if (const auto held = weak.lock()) held->remove(key);
  });
}

}  // namespace quenlet
