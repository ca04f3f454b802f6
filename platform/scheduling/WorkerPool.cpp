#include "platform/scheduling/WorkerPool.h"

#include <algorithm>
#include <system_error>
#include <utility>

#include "platform/foundation/FreedMemory.h"
#include "platform/scheduling/runGuarded.h"

namespace quenlet {
namespace {

// The pool that this thread belongs to; null for other threads.
thread_local const WorkerPool* poolOfThisThread = nullptr;

// After so many blocks much memory may be free, and returning it costs little beside running them.
constexpr std::size_t manyBlocks = 256;

}  // namespace

std::size_t WorkerPool::usualThreadCount() {
  return std::clamp<std::size_t>(std::thread::hardware_concurrency(), 2, 4);
}

WorkerPool::WorkerPool(std::size_t threadCount) {
  threads.reserve(threadCount);
  try {
    while (threads.size() < threadCount) threads.emplace_back([this] { work(); });
  } catch (const std::system_error&) {
    if (threads.empty()) throw;  // fewer of them do the same work
  }
}

WorkerPool::~WorkerPool() { shutDown(); }

void WorkerPool::post(Block block) {
  MutexLock lock(mutex);
  if (ended) return;
  blocks.push_back(std::move(block));
  changed.notifyOne();
}

void WorkerPool::postLast(Block block) {
  if (poolOfThisThread != this) return post(std::move(block));
  // No test for `ended`: this thread is busy, and the pool ends only when none is.
  MutexLock lock(mutex);
  blocks.push_back(std::move(block));
}

void WorkerPool::shutDown() {
  {
    MutexLock lock(mutex);
    ending = true;
    changed.notifyAll();
  }
  for (std::thread& thread : threads) thread.join();
  threads.clear();
}

// A thread ends only when no other one is busy, because a busy one may still post.
void WorkerPool::work() {
  poolOfThisThread = this;
  while (true) {
    Block block;
    {
      MutexLock lock(mutex);
      while (blocks.empty() && !(ending && busyThreads == 0)) changed.wait(mutex);
      if (blocks.empty()) {
        ended = true;
        return;
      }
      block = std::move(blocks.front());
      blocks.pop_front();
      ++busyThreads;
    }
    runGuarded(block);
    block = nullptr;
    if (restsAfterMany()) returnFreedMemory();
  }
}

// Counts the end of a block; true when the pool is now idle after many.
bool WorkerPool::restsAfterMany() {
  MutexLock lock(mutex);
  --busyThreads;
  ++blocksSinceRest;
  if (busyThreads > 0 || !blocks.empty()) return false;
  if (ending) changed.notifyAll();
  if (blocksSinceRest < manyBlocks) return false;
  blocksSinceRest = 0;
  return true;
}

}  // namespace quenlet
