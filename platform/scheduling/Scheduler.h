#pragma once

#include <functional>
#include <memory>
#include <string>

#include "platform/foundation/Cancelable.h"

namespace quenlet {

using Block = std::function<void()>;

// Runs blocks, now or after a delay. Thread-safe. Each implementation states order, concurrency,
// re-entrance, and the fate of pending blocks at its destruction.
class Scheduler {
 public:
  virtual ~Scheduler() = default;
  // Runs `block` on the scheduler. Only the immediate scheduler runs it before the call returns.
  virtual void performBlock(Block block) = 0;
  // Runs `performBlock` on the scheduler once `delaySeconds` have passed, unless the returned token
  // is cancelled before it starts.
  [[nodiscard]] virtual std::shared_ptr<Cancelable> afterDelay(double delaySeconds,
                                                               Block performBlock) = 0;
};

// Runs writer blocks alone and reader blocks together. Blocks start in submission order: a block
// sees the effect of every writer submitted before it, and of none submitted after it. Thread-safe.
// Pending blocks still run after the last reference is dropped.
class ReaderWriterScheduler {
 public:
  virtual ~ReaderWriterScheduler() = default;
  // Asynchronous; cancelling the token before the block starts drops it.
  virtual std::shared_ptr<Cancelable> performWriterBlock(Block block) = 0;
  virtual std::shared_ptr<Cancelable> performReaderBlock(Block block) = 0;
  // Runs `block` as a reader and returns after it, on the calling thread. Do not call it from a
  // block of the same scheduler.
  virtual void performSynchronousReaderBlock(const Block& block) = 0;
};

// Gives out schedulers. Thread-safe.
class SchedulerProvider {
 public:
  virtual ~SchedulerProvider() = default;
  // Runs blocks concurrently on the pool, in no guaranteed order.
  [[nodiscard]] virtual std::shared_ptr<Scheduler> backgroundScheduler() = 0;
  // Runs blocks one by one on the thread that runs the main run loop.
  [[nodiscard]] virtual std::shared_ptr<Scheduler> mainThreadScheduler() = 0;
  // Runs a block at once on the caller's thread.
  [[nodiscard]] virtual std::shared_ptr<Scheduler> immediateScheduler() = 0;
  // Names are for debugging.
  [[nodiscard]] virtual std::shared_ptr<Scheduler> newSerialSchedulerWithName(
      const std::string& name) = 0;
  [[nodiscard]] virtual std::shared_ptr<ReaderWriterScheduler> newReaderWriterSchedulerWithName(
      const std::string& name) = 0;
};

}  // namespace quenlet
