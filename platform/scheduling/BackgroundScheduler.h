#pragma once

#include <memory>
#include <utility>

#include "platform/scheduling/PoolServices.h"
#include "platform/scheduling/Scheduler.h"

namespace quenlet {

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

}  // namespace quenlet
