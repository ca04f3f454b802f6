#pragma once

#include <memory>
#include <string>

#include "platform/scheduling/Scheduler.h"
#include "platform/scheduling/WorkerPool.h"

namespace quenlet {

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
