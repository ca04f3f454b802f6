#pragma once

#include <memory>
#include <string>

#include "platform/scheduling/PoolServices.h"
#include "platform/scheduling/Scheduler.h"

namespace quenlet {

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

}  // namespace quenlet
