#include "platform/scheduling/ProductionSchedulerProvider.h"

#include <utility>

#include "platform/scheduling/BackgroundScheduler.h"
#include "platform/scheduling/ImmediateScheduler.h"
#include "platform/scheduling/PooledReaderWriterScheduler.h"
#include "platform/scheduling/SerialScheduler.h"

namespace quenlet {

ProductionSchedulerProvider::ProductionSchedulerProvider(
    std::shared_ptr<Scheduler> mainThreadScheduler, std::size_t threadCount)
    : pool(std::make_shared<WorkerPool>(threadCount)),
      timers(std::make_shared<TimerThread>()),
      mainThread(std::move(mainThreadScheduler)),
      background(std::make_shared<BackgroundScheduler>(PoolServices{pool, timers})),
      immediate(std::make_shared<ImmediateScheduler>(background)) {}

ProductionSchedulerProvider::~ProductionSchedulerProvider() {
  timers->shutDown();
  pool->shutDown();
}

std::shared_ptr<Scheduler> ProductionSchedulerProvider::newSerialSchedulerWithName(
    const std::string& name) {
  return std::make_shared<SerialScheduler>(PoolServices{pool, timers}, name);
}

std::shared_ptr<ReaderWriterScheduler>
ProductionSchedulerProvider::newReaderWriterSchedulerWithName(const std::string& name) {
  return std::make_shared<PooledReaderWriterScheduler>(pool, name);
}

}  // namespace quenlet
