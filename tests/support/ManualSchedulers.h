#pragma once

#include <algorithm>
#include <deque>
#include <map>

#include "platform/scheduling/CancelableBlock.h"
#include "quenlet/Date.h"
#include "tests/support/Trace.h"

namespace quenlet {

// What the schedulers of one provider share: one first-in, first-out queue of blocks that run on
// the test's thread when the test says so, a clock that stands still until the test moves it, and a
// trace that knows which scheduler's block runs. One thread only, for everything in this file.
class ManualQueue {
 public:
  Trace trace;

  std::shared_ptr<Cancelable> add(const void* scheduler, const std::string& name, Block block,
                                  double delaySeconds = 0) {
    const auto added = std::make_shared<CancelableBlock>(trace.within(name, std::move(block)));
    if (delaySeconds > 0) {
      timers.emplace(seconds + delaySeconds, Entry(scheduler, added));
    } else {
      blocks.emplace_back(scheduler, added);
    }
    return added;
  }

  // Runs the oldest block of `scheduler`, or of all schedulers for null; false if none waits.
  bool runOne(const void* scheduler = nullptr) {
    const auto found = std::find_if(blocks.begin(), blocks.end(), [&](const Entry& entry) {
      return scheduler == nullptr || entry.first == scheduler;
    });
    if (found == blocks.end()) return false;
    const auto block = found->second;
    blocks.erase(found);
    block->run();
    return true;
  }
  void runUntilIdle() {
    while (runOne()) continue;
  }
  // Moves the clock on, stopping at each delayed block that comes due to run it and what it queues.
  void advance(double bySeconds) {
    const double end = seconds + bySeconds;
    runUntilIdle();
    while (!timers.empty() && timers.begin()->first <= end) {
      const auto due = timers.extract(timers.begin());
      seconds = due.key();
      blocks.push_back(due.mapped());
      runUntilIdle();
    }
    seconds = end;
  }
  // Drops what still waits, which may hold those who hold this queue.
  void clear() {
    const auto dropped = std::make_pair(std::exchange(blocks, {}), std::exchange(timers, {}));
  }

  [[nodiscard]] Date now() const { return Date(1767225600 + seconds); }

 private:
  using Entry = std::pair<const void*, std::shared_ptr<CancelableBlock>>;
  std::deque<Entry> blocks;
  std::multimap<double, Entry> timers;
  double seconds = 0;
};

// Runs blocks in order when told, or at once. As nothing runs together on one thread, readers and
// writers only keep their order.
class ManualScheduler final : public Scheduler, public ReaderWriterScheduler {
 public:
  enum class Runs { whenTold, atOnce };
  ManualScheduler(ManualQueue& shared, std::string schedulerName, Runs blocksRun = Runs::whenTold)
      : queue(shared), name(std::move(schedulerName)), runs(blocksRun) {}

  void performBlock(Block block) override {
    if (runs == Runs::atOnce) return queue.trace.within(name, std::move(block))();
    queue.add(this, name, std::move(block));
  }
  std::shared_ptr<Cancelable> afterDelay(double delaySeconds, Block block) override {
    return queue.add(this, name, std::move(block), delaySeconds);
  }
  std::shared_ptr<Cancelable> performWriterBlock(Block block) override {
    return queue.add(this, "writer", std::move(block));
  }
  std::shared_ptr<Cancelable> performReaderBlock(Block block) override {
    return queue.add(this, "reader", std::move(block));
  }
  // Runs what this scheduler was given before, then `block`; other schedulers' blocks stay queued.
  void performSynchronousReaderBlock(const Block& block) override {
    bool reached = false;
    queue.add(this, name, [&] { reached = true; });
    while (!reached) queue.runOne(this);
    queue.trace.within("reader", block)();
  }

 private:
  ManualQueue& queue;
  const std::string name;
  const Runs runs;
};

// Gives out manual schedulers that share this queue and clock and live no longer than it. The trace
// calls a serial one by the last part of its name ("io").
class ManualSchedulerProvider final : public SchedulerProvider, public ManualQueue {
 public:
  std::shared_ptr<Scheduler> backgroundScheduler() override { return background; }
  std::shared_ptr<Scheduler> mainThreadScheduler() override { return mainThread; }
  std::shared_ptr<Scheduler> immediateScheduler() override { return immediate; }
  std::shared_ptr<Scheduler> newSerialSchedulerWithName(const std::string& name) override {
    return std::make_shared<ManualScheduler>(*this, name.substr(name.rfind('.') + 1));
  }
  std::shared_ptr<ReaderWriterScheduler> newReaderWriterSchedulerWithName(
      const std::string& name) override {
    return std::make_shared<ManualScheduler>(*this, name);
  }

 private:
  const std::shared_ptr<Scheduler> background =
      std::make_shared<ManualScheduler>(*this, "background");
  const std::shared_ptr<Scheduler> mainThread = std::make_shared<ManualScheduler>(*this, "main");
  const std::shared_ptr<Scheduler> immediate =
      std::make_shared<ManualScheduler>(*this, "immediate", ManualScheduler::Runs::atOnce);
};

}  // namespace quenlet
