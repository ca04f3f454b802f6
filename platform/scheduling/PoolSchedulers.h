#pragma once

#include <functional>
#include <memory>
#include <string>
#include <utility>

#include "platform/scheduling/CancelableBlock.h"
#include "platform/scheduling/Scheduler.h"
#include "platform/scheduling/WorkerPool.h"

namespace quenlet {

// What the schedulers of one provider share: the threads, and the scheduler that waits for delayed
// blocks and only hands them over. That one is held weakly: delayed blocks own their schedulers,
// which would close a cycle. A scheduler that outlives its provider finds the pool shut down, and
// drops new blocks.
struct PoolServices final {
  std::shared_ptr<WorkerPool> pool;
  std::weak_ptr<Scheduler> timers;

  // Delays a block of a scheduler that starts its blocks through `submit`. Blocks for the same
  // instant are handed over in the order of the calls. A cancelled one leaves nothing behind.
  [[nodiscard]] std::shared_ptr<Cancelable> afterDelay(double delaySeconds,
                                                       std::function<void(Block)> submit,
                                                       Block block) const {
    const auto held = timers.lock();
    if (!held) return std::make_shared<CancelBlock>(nullptr);
    // After the hand-over the block still waits in its scheduler, where cancelling must reach it.
    const auto waiting = std::make_shared<CancelableBlock>(std::move(block));
    const auto timer = held->afterDelay(delaySeconds, [submit = std::move(submit), waiting] {
      submit([waiting] { waiting->run(); });
    });
    return std::make_shared<CancelBlock>([timer, waiting] {
      timer->cancel();
      waiting->cancel();
    });
  }
};

// Runs blocks one by one, in submission order, on the pool's threads: not always the same thread,
// but each block sees the effects of those before it. Thread-safe. A block may submit further ones;
// they run after it. Several serial schedulers take turns block by block. Pending blocks, delayed
// ones too, still run after the scheduler is destroyed. An exception ends only the block that
// throws it (see runGuarded.h).
class SerialScheduler final : public Scheduler {
 public:
  SerialScheduler(PoolServices shared, std::string debugName);

  void performBlock(Block block) override;
  [[nodiscard]] std::shared_ptr<Cancelable> afterDelay(double delaySeconds, Block block) override;

 private:
  struct State;
  const PoolServices services;
  const std::string schedulerName;  // for debuggers
  const std::shared_ptr<State> state;
};

// Readers and writers in one queue, on the pool's threads:
//
//   submitted   R1 R2 W3 R4 R5 W6
//   run         R1 R2 │ W3 │ R4 R5 │ W6        │ waits for everything to its left
//
// Readers between two writers run together. R4 does not overtake the waiting W3, so writers never
// starve. Thread-safe. A block may submit further ones.
//
// A thread that waits in performSynchronousReaderBlock() runs blocks that are ready before its own,
// so its turn comes even when all threads of the pool wait in the same way. Pending blocks still
// run after the scheduler is destroyed. An exception ends only the block that throws it, and its
// turn (see runGuarded.h); one from a synchronous block reaches the caller.
class PooledReaderWriterScheduler final : public ReaderWriterScheduler {
 public:
  PooledReaderWriterScheduler(std::shared_ptr<WorkerPool> pool, std::string debugName);

  std::shared_ptr<Cancelable> performWriterBlock(Block block) override;
  std::shared_ptr<Cancelable> performReaderBlock(Block block) override;
  void performSynchronousReaderBlock(const Block& block) override;

 private:
  struct State;
  const std::string schedulerName;  // for debuggers
  const std::shared_ptr<State> state;
};

}  // namespace quenlet
