#include "platform/scheduling/ProductionSchedulerProvider.h"

#include <memory>
#include <utility>

#include "platform/scheduling/ImmediateScheduler.h"
#include "platform/scheduling/PoolSchedulers.h"
#include "platform/scheduling/Scheduler.h"

namespace quenlet {
namespace {

// Runs blocks on the pool's threads, several at a time; they start in submission order and end in
// any order. Thread-safe. Pending blocks still run after the scheduler is destroyed.
class BackgroundScheduler final : public Scheduler {
 public:
  explicit BackgroundScheduler(PoolServices shared) : services(std::move(shared)) {}

  void performBlock(Block block) override { services.pool->post(std::move(block)); }
  [[nodiscard]] std::shared_ptr<Cancelable> afterDelay(double delaySeconds, Block block) override {
    return services.afterDelay(
        delaySeconds, [pool = services.pool](Block due) { pool->post(std::move(due)); },
        std::move(block));
  }

 private:
  const PoolServices services;
};

}  // namespace

ProductionSchedulerProvider::ProductionSchedulerProvider(
    std::shared_ptr<Scheduler> mainThreadScheduler, std::size_t threadCount)
    : pool(std::make_shared<WorkerPool>(threadCount)),
      mainThread(std::move(mainThreadScheduler)),
      background(std::make_shared<BackgroundScheduler>(PoolServices{pool, mainThread})),
      immediate(std::make_shared<ImmediateScheduler>(background)) {}

ProductionSchedulerProvider::~ProductionSchedulerProvider() { pool->shutDown(); }

std::shared_ptr<Scheduler> ProductionSchedulerProvider::newSerialSchedulerWithName(
    const std::string& name) {
  return std::make_shared<SerialScheduler>(PoolServices{pool, mainThread}, name);
}

std::shared_ptr<ReaderWriterScheduler>
ProductionSchedulerProvider::newReaderWriterSchedulerWithName(const std::string& name) {
  return std::make_shared<PooledReaderWriterScheduler>(pool, name);
}

}  // namespace quenlet
