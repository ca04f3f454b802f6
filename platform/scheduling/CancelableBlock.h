#pragma once

#include <utility>

#include "platform/foundation/Cancelable.h"
#include "platform/foundation/Mutex.h"
#include "platform/scheduling/Scheduler.h"

namespace quenlet {

// A block that waits for its turn and can be cancelled until it starts. Thread-safe. The block runs
// at most once, and is freed once it has run or is cancelled, however long the token is kept.
class CancelableBlock final : public Cancelable {
 public:
  explicit CancelableBlock(Block waiting) : block(std::move(waiting)) {}

  // Runs the block on the calling thread, unless it has started before or is cancelled.
  void run() {
    if (const Block taken = take()) taken();
  }
  void cancel() override { take(); }

 private:
  Block take() EXCLUDES(mutex) {
    MutexLock lock(mutex);
    return std::exchange(block, nullptr);
  }

  Mutex mutex;
  Block block GUARDED_BY(mutex);
};

}  // namespace quenlet
