#pragma once

#include <memory>
#include <utility>

#include "platform/scheduling/Scheduler.h"

namespace quenlet {

// Runs a block within performBlock(), on the caller's thread; nested calls nest. Thread-safe. A
// delayed block, which has no caller when it is due, runs on another scheduler.
class ImmediateScheduler final : public Scheduler {
 public:
  explicit ImmediateScheduler(std::shared_ptr<Scheduler> delayed) : later(std::move(delayed)) {}

  void performBlock(Block block) override { block(); }
  [[nodiscard]] std::shared_ptr<Cancelable> afterDelay(double delaySeconds, Block block) override {
    return later->afterDelay(delaySeconds, std::move(block));
  }

 private:
  const std::shared_ptr<Scheduler> later;
};

}  // namespace quenlet
