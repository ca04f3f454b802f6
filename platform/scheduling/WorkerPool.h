#pragma once

#include <cstddef>
#include <deque>
#include <thread>
#include <vector>

#include "platform/foundation/Mutex.h"
#include "platform/scheduling/Scheduler.h"

namespace quenlet {

// A fixed number of threads that run blocks, the oldest first. Thread-safe. All threads are started
// at construction. Blocks should not wait for other blocks of the pool. An exception ends only the
// block that throws it (see runGuarded.h). When the pool becomes idle after many blocks, freed
// memory is returned to the system.
class WorkerPool final {
 public:
  // One per processor, but at least 2 and at most 4.
  [[nodiscard]] static std::size_t usualThreadCount();

  // Makes do with fewer threads when the system refuses some; throws std::system_error when it
  // refuses all.
  explicit WorkerPool(std::size_t threadCount);
  ~WorkerPool();
  WorkerPool(const WorkerPool&) = delete;
  WorkerPool& operator=(const WorkerPool&) = delete;

  // After shutDown() the block is dropped.
  void post(Block block) EXCLUDES(mutex);
  // Like post(), as the last act of a block: no other thread is woken, because the calling pool
  // thread looks for work next. On a thread outside the pool, the same as post().
  void postLast(Block block) EXCLUDES(mutex);
  // Runs all queued blocks, and those that they post in turn, then ends the threads. Do not call it
  // on one of them.
  void shutDown() EXCLUDES(mutex);

 private:
  void work() EXCLUDES(mutex);
  [[nodiscard]] bool restsAfterMany() EXCLUDES(mutex);

  Mutex mutex;
  ConditionVariable changed;
  std::deque<Block> blocks GUARDED_BY(mutex);
  std::size_t busyThreads GUARDED_BY(mutex) = 0;
  std::size_t blocksSinceRest GUARDED_BY(mutex) = 0;
  bool ending GUARDED_BY(mutex) = false;
  bool ended GUARDED_BY(mutex) = false;
  std::vector<std::thread> threads;
};

}  // namespace quenlet
