#include "platform/scheduling/PoolSchedulers.h"

#include <deque>
#include <utility>

#include "platform/foundation/Mutex.h"
#include "platform/scheduling/runGuarded.h"

namespace quenlet {

struct SerialScheduler::State : std::enable_shared_from_this<State> {
  explicit State(std::shared_ptr<WorkerPool> workers) : pool(std::move(workers)) {}

  void submit(Block block) EXCLUDES(mutex) {
    {
      MutexLock lock(mutex);
      blocks.push_back(std::move(block));
      if (std::exchange(active, true)) return;
    }
    handOver([this] { pool->post([self = shared_from_this()] { self->runNext(); }); });
  }

  // Without the memory to pass the turn on, the scheduler would stand still forever, so the process
  // ends (noexcept).
  template <typename Act>
  static void handOver(const Act& act) noexcept {
    act();
  }

  void runNext() EXCLUDES(mutex) {
    Block block;
    {
      MutexLock lock(mutex);
      block = std::move(blocks.front());
      blocks.pop_front();
    }
    runGuarded(block);
    block = nullptr;  // its destructors are part of the turn
    {
      MutexLock lock(mutex);
      active = !blocks.empty();
      if (!active) return;
    }
    handOver([this] { pool->postLast([self = shared_from_this()] { self->runNext(); }); });
  }

  const std::shared_ptr<WorkerPool> pool;
  Mutex mutex;
  std::deque<Block> blocks GUARDED_BY(mutex);
  bool active GUARDED_BY(mutex) = false;  // the pool has runNext() queued or running
};

SerialScheduler::SerialScheduler(PoolServices shared, std::string debugName)
    : services(std::move(shared)),
      schedulerName(std::move(debugName)),
      state(std::make_shared<State>(services.pool)) {}

void SerialScheduler::performBlock(Block block) { state->submit(std::move(block)); }

std::shared_ptr<Cancelable> SerialScheduler::afterDelay(double delaySeconds, Block block) {
  return services.afterDelay(
      delaySeconds, [held = state](Block due) { held->submit(std::move(due)); }, std::move(block));
}

}  // namespace quenlet
