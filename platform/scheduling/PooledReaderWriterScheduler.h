#pragma once

#include <memory>
#include <string>

#include "platform/scheduling/ReaderWriterScheduler.h"
#include "platform/scheduling/WorkerPool.h"

namespace quenlet {

// Readers and writers on the pool's threads. A block's turn comes when every writer submitted
// before it has ended and, for a writer, every reader too; readers between two writers run
// together, and a waiting writer is not overtaken by later readers. Thread-safe. A block may submit
// further ones.
//
// Whoever waits in performSynchronousReaderBlock() runs, until its own turn has come, blocks of
// this scheduler that are ready before it, so that it gets there even when all of the pool's
// threads are waiting in the same way. Pending blocks still run when the scheduler goes. What a
// block throws ends that block and its turn alone (see runGuarded.h); what a synchronous one throws
// reaches its caller.
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
