#pragma once

#include <cstddef>
#include <deque>
#include <functional>
#include <thread>
#include <vector>

#include "platform/foundation/Mutex.h"
#include "platform/scheduling/Scheduler.h"

namespace quenlet {

// A few threads that run blocks, the oldest first. Thread-safe. A further thread is started when a
// block comes and all others are busy. Blocks should not wait for other blocks of the pool. An
// exception ends only the block that throws it (see runGuarded.h). When the pool becomes idle after
// many blocks, freed memory is returned to the system.
class WorkerPool final {
 public:
  // One per processor, but at least 2 and at most 4.
  [[nodiscard]] static std::size_t usualThreadCount();

  // Gets the blocks that come while the system refuses even one thread.
  using StandIn = std::function<void(Block)>;

  // Starts the first of up to `threadCount` threads; throws std::system_error when the system
  // refuses it, and makes do without others that it refuses.
  explicit WorkerPool(std::size_t threadCount);
  // Starts the first thread with the first block, too.
  WorkerPool(std::size_t threadCount, StandIn standIn);
  ~WorkerPool();
  WorkerPool(const WorkerPool&) = delete;
  WorkerPool& operator=(const WorkerPool&) = delete;

  // After shutDown() the block is dropped. The caller keeps the pool until it returns.
  void post(Block block) EXCLUDES(mutex);
  // Like post(), as the last act of a block: no other thread is woken, because the calling pool
  // thread looks for work next. On a thread outside the pool, the same as post().
  void postLast(Block block) EXCLUDES(mutex);
  // Runs all queued blocks, and those that they post in turn, on as many threads as before, then
  // ends these. Do not call it on one of them.
  void shutDown() EXCLUDES(mutex);

 private:
  void work() EXCLUDES(mutex);
  [[nodiscard]] bool restsAfterMany() EXCLUDES(mutex);
  [[nodiscard]] bool hasThread() REQUIRES(mutex);

  const std::size_t mostThreads;
  const StandIn instead;
  Mutex mutex;
  ConditionVariable changed;
  std::deque<Block> blocks GUARDED_BY(mutex);
  std::size_t busyThreads GUARDED_BY(mutex) = 0;
  std::size_t blocksSinceRest GUARDED_BY(mutex) = 0;
  bool ending GUARDED_BY(mutex) = false;
  bool ended GUARDED_BY(mutex) = false;
  std::vector<std::thread> threads GUARDED_BY(mutex);
};

}  // namespace quenlet
