#pragma once

#include <algorithm>
#include <chrono>
#include <deque>
#include <functional>
#include <memory>
#include <string>
#include <utility>

#include "platform/foundation/Date.h"
#include "platform/scheduling/CancelableBlock.h"
#include "platform/scheduling/ReaderWriterScheduler.h"
#include "platform/scheduling/Scheduler.h"
#include "platform/scheduling/SchedulerProvider.h"
#include "platform/scheduling/TimerQueue.h"

namespace quenlet {

// Schedulers without threads or real time: blocks wait in one first-in, first-out queue and run on
// the test's thread when the test says so. One thread only, for everything in this file.

// A clock that stands still until the test moves it.
class ManualClock final {
 public:
  explicit ManualClock(Date start = Date(1767225600.0)) : startDate(start) {}  // 2026-01-01

  [[nodiscard]] Date now() const {
    return startDate.addingSeconds(std::chrono::duration<double>(elapsed).count());
  }
  void moveBy(std::chrono::nanoseconds interval) { elapsed += interval; }
  [[nodiscard]] TimerQueue::Instant instant() const { return TimerQueue::Instant(elapsed); }

 private:
  Date startDate;
  std::chrono::nanoseconds elapsed{};
};

// The queue that the manual schedulers of one provider share.
class ManualQueue final : public std::enable_shared_from_this<ManualQueue> {
 public:
  [[nodiscard]] std::shared_ptr<Cancelable> add(const void* scheduler, Block block) {
    auto waiting = std::make_shared<CancelableBlock>(std::move(block));
    blocks.push_back({scheduler, waiting});
    return std::make_shared<CancelBlock>([weak = weak_from_this(), waiting] {
      waiting->cancel();
      if (const auto queue = weak.lock()) {
        std::erase_if(queue->blocks, [&](const Entry& entry) { return entry.block == waiting; });
      }
    });
  }

  // When the delay is over, `start` queues the block and gives back the token of that.
  [[nodiscard]] std::shared_ptr<Cancelable> addDelayed(
      double delaySeconds, std::function<std::shared_ptr<Cancelable>()> start) {
    const auto started = std::make_shared<std::shared_ptr<Cancelable>>();
    const auto key = timers.add(clock.instant() + TimerQueue::duration(delaySeconds),
                                [started, start = std::move(start)] { *started = start(); });
    return std::make_shared<CancelBlock>([weak = weak_from_this(), started, key] {
      if (const auto queue = weak.lock()) static_cast<void>(queue->timers.remove(key));
      if (*started) (*started)->cancel();
    });
  }

  // Runs the oldest block of `scheduler`, or of all schedulers for null; false when there is none.
  bool runOne(const void* scheduler = nullptr) {
    for (auto entry = blocks.begin(); entry != blocks.end(); ++entry) {
      if (scheduler != nullptr && entry->scheduler != scheduler) continue;
      const auto block = entry->block;
      blocks.erase(entry);
      block->run();
      return true;
    }
    return false;
  }

  void runUntilIdle() {
    while (runOne()) {
    }
  }

  // Runs what is queued, then moves the clock on, stopping at each delayed block that comes due to
  // run it and whatever it queues.
  void advance(double seconds) {
    const auto end = clock.instant() + TimerQueue::duration(seconds);
    runUntilIdle();
    while (timers.earliest() && *timers.earliest() <= end) {
      const auto due = std::max(*timers.earliest(), clock.instant());
      clock.moveBy(due - clock.instant());
      timers.takeDue(due)();
      runUntilIdle();
    }
    clock.moveBy(end - clock.instant());
  }

  [[nodiscard]] std::size_t pendingCount() const { return blocks.size(); }
  [[nodiscard]] std::size_t delayedCount() const { return timers.count(); }

  ManualClock clock;

 private:
  struct Entry {
    const void* scheduler;
    std::shared_ptr<CancelableBlock> block;
  };
  std::deque<Entry> blocks;
  TimerQueue timers;
};

class ManualScheduler final : public Scheduler {
 public:
  explicit ManualScheduler(std::shared_ptr<ManualQueue> shared) : queue(std::move(shared)) {}

  void performBlock(Block block) override { static_cast<void>(queue->add(this, std::move(block))); }
  std::shared_ptr<Cancelable> afterDelay(double delaySeconds, Block block) override {
    return queue->addDelayed(delaySeconds, [shared = queue, scheduler = this, block] {
      return shared->add(scheduler, block);
    });
  }

 private:
  const std::shared_ptr<ManualQueue> queue;
};

// Runs blocks at once; a delayed one at once when the clock gets there.
class ManualImmediateScheduler final : public Scheduler {
 public:
  explicit ManualImmediateScheduler(std::shared_ptr<ManualQueue> shared)
      : queue(std::move(shared)) {}

  void performBlock(Block block) override { block(); }
  std::shared_ptr<Cancelable> afterDelay(double delaySeconds, Block block) override {
    return queue->addDelayed(delaySeconds, [block]() -> std::shared_ptr<Cancelable> {
      block();
      return nullptr;
    });
  }

 private:
  const std::shared_ptr<ManualQueue> queue;
};

// As nothing runs together on one thread, readers and writers only keep their order.
class ManualReaderWriterScheduler final : public ReaderWriterScheduler {
 public:
  explicit ManualReaderWriterScheduler(std::shared_ptr<ManualQueue> shared)
      : queue(std::move(shared)) {}

  std::shared_ptr<Cancelable> performWriterBlock(Block block) override {
    return queue->add(this, std::move(block));
  }
  std::shared_ptr<Cancelable> performReaderBlock(Block block) override {
    return queue->add(this, std::move(block));
  }
  // Runs what this scheduler was given before, then `block`; other schedulers' blocks stay queued.
  void performSynchronousReaderBlock(const Block& block) override {
    bool reached = false;
    const auto marker = queue->add(this, [&] { reached = true; });
    while (!reached) queue->runOne(this);
    block();
  }

 private:
  const std::shared_ptr<ManualQueue> queue;
};

// Gives out manual schedulers that share one queue and one clock.
//
//   ManualSchedulerProvider schedulers;
//   schedulers.backgroundScheduler()->performBlock(block);  // nothing runs
//   schedulers.runUntilIdle();                               // now it does
//   schedulers.advance(2.0);                                 // and what was delayed by 2 s or less
class ManualSchedulerProvider final : public SchedulerProvider {
 public:
  std::shared_ptr<Scheduler> backgroundScheduler() override { return background; }
  std::shared_ptr<Scheduler> mainThreadScheduler() override { return mainThread; }
  std::shared_ptr<Scheduler> immediateScheduler() override { return immediate; }
  std::shared_ptr<Scheduler> newSerialSchedulerWithName(const std::string&) override {
    return std::make_shared<ManualScheduler>(queue);
  }
  std::shared_ptr<ReaderWriterScheduler> newReaderWriterSchedulerWithName(
      const std::string&) override {
    return std::make_shared<ManualReaderWriterScheduler>(queue);
  }

  // Runs queued blocks, and those that they queue, until none is left.
  void runUntilIdle() { queue->runUntilIdle(); }
  // Runs the oldest queued block; false when there is none.
  bool runOne() { return queue->runOne(); }
  // Moves the clock on; delayed blocks run in the order of their deadlines, each at its own
  // instant.
  void advance(double seconds) { queue->advance(seconds); }
  // Blocks that runUntilIdle() would start with; cancelled and delayed ones do not count.
  [[nodiscard]] std::size_t pendingCount() const { return queue->pendingCount(); }
  // Delayed blocks that are neither due nor cancelled.
  [[nodiscard]] std::size_t delayedCount() const { return queue->delayedCount(); }
  [[nodiscard]] Date now() const { return queue->clock.now(); }
  [[nodiscard]] ManualClock& clock() { return queue->clock; }

 private:
  const std::shared_ptr<ManualQueue> queue = std::make_shared<ManualQueue>();
  const std::shared_ptr<Scheduler> background = std::make_shared<ManualScheduler>(queue);
  const std::shared_ptr<Scheduler> mainThread = std::make_shared<ManualScheduler>(queue);
  const std::shared_ptr<Scheduler> immediate = std::make_shared<ManualImmediateScheduler>(queue);
};

}  // namespace quenlet
