#pragma once

#include <functional>
#include <memory>
#include <utility>

#include "platform/scheduling/TimerThread.h"
#include "platform/scheduling/WorkerPool.h"

namespace quenlet {

// The threads that the schedulers of one provider share. A scheduler that outlives its provider
// finds both shut down and drops new blocks. The timers are held weakly: their delayed blocks own
// schedulers, which would close a cycle.
struct PoolServices final {
  std::shared_ptr<WorkerPool> pool;
  std::weak_ptr<TimerThread> timers;

  // Delays a block of a scheduler that starts its blocks through `submit`.
  [[nodiscard]] std::shared_ptr<Cancelable> afterDelay(double delaySeconds,
                                                       std::function<void(Block)> submit,
                                                       Block block) const {
    const auto held = timers.lock();
    if (!held) return std::make_shared<CancelBlock>(nullptr);
    return held->afterDelay(delaySeconds, std::move(submit), std::move(block));
  }
};

}  // namespace quenlet
