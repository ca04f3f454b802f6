#pragma once

#include <cstddef>
#include <memory>
#include <string>

#include "platform/scheduling/PoolSchedulers.h"
#include "platform/scheduling/Scheduler.h"

namespace quenlet {

// The schedulers of the process: over a pool of a few threads, and the main thread's, which comes
// from the run loop and wakes the delayed blocks of the others. Thread-safe.
class ProductionSchedulerProvider final : public SchedulerProvider {
 public:
  explicit ProductionSchedulerProvider(std::shared_ptr<Scheduler> mainThreadScheduler,
                                       std::size_t threadCount = WorkerPool::usualThreadCount());
  // Runs all blocks but delayed ones that are not due, and those that they submit, and ends the
  // threads. Do not destroy it on one of them. Its schedulers drop blocks that come later.
  ~ProductionSchedulerProvider() override;

  [[nodiscard]] std::shared_ptr<Scheduler> backgroundScheduler() override { return background; }
  [[nodiscard]] std::shared_ptr<Scheduler> mainThreadScheduler() override { return mainThread; }
  [[nodiscard]] std::shared_ptr<Scheduler> immediateScheduler() override { return immediate; }
  [[nodiscard]] std::shared_ptr<Scheduler> newSerialSchedulerWithName(
      const std::string& name) override;
  [[nodiscard]] std::shared_ptr<ReaderWriterScheduler> newReaderWriterSchedulerWithName(
      const std::string& name) override;

 private:
  const std::shared_ptr<WorkerPool> pool;
  const std::shared_ptr<Scheduler> mainThread;
  const std::shared_ptr<Scheduler> background;
  const std::shared_ptr<Scheduler> immediate;
};

}  // namespace quenlet
