#pragma once

#include <functional>
#include <memory>

#include "platform/foundation/Cancelable.h"

namespace quenlet {

using Block = std::function<void()>;

// Runs blocks, now or after a delay. Thread-safe. Each implementation states order, concurrency,
// re-entrance, and the fate of pending blocks at its destruction.
class Scheduler {
 public:
  virtual ~Scheduler() = default;
  // Runs `block` on the scheduler. Only the immediate scheduler runs it before the call returns.
  virtual void performBlock(Block block) = 0;
  // Runs `performBlock` on the scheduler once `delaySeconds` have passed, unless the returned token
  // is cancelled before it starts.
  [[nodiscard]] virtual std::shared_ptr<Cancelable> afterDelay(double delaySeconds,
                                                               Block performBlock) = 0;
};

}  // namespace quenlet
