#pragma once

#include <memory>
#include <string>

#include "platform/scheduling/ReaderWriterScheduler.h"
#include "platform/scheduling/Scheduler.h"

namespace quenlet {

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
