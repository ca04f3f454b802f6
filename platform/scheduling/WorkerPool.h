#pragma once

#include <cstddef>
#include <deque>
#include <thread>
#include <vector>

#include "platform/foundation/Mutex.h"
#include "platform/scheduling/Scheduler.h"

namespace quenlet {

// A fixed number of threads that run blocks, the oldest first. Thread-safe. All threads are started
// at construction. Blocks should not wait for other blocks of the pool; what one throws ends that
// block alone (see runGuarded.h). Once many have run and none is left, what they have freed goes
// back to the system.
class WorkerPool final {
 public:
  // From 2 to 4, by the machine's processors.
  [[nodiscard]] static std::size_t usualThreadCount();

  // With fewer threads when the system does not start so many; throws std::system_error when it
  // starts none.
  explicit WorkerPool(std::size_t threadCount);
  ~WorkerPool();
  WorkerPool(const WorkerPool&) = delete;
  WorkerPool& operator=(const WorkerPool&) = delete;

  // After shutDown() the block is dropped.
  void post(Block block) EXCLUDES(mutex);
  // As post(), for the last act of a block: a caller that is one of the pool's threads looks for
  // work next, so that no other thread is woken for it.
  void postLast(Block block) EXCLUDES(mutex);
  // Runs what is queued, and what those blocks post in turn, then ends the threads. Not to be
  // called on one of them.
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
