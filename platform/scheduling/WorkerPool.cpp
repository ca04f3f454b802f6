#include "platform/scheduling/WorkerPool.h"

#include <algorithm>
#include <exception>
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

WorkerPool::WorkerPool(std::size_t threadCount) : mostThreads(threadCount) {
  MutexLock lock(mutex);
  threads.emplace_back([this] { work(); });
}

WorkerPool::WorkerPool(std::size_t threadCount, StandIn standIn)
    : mostThreads(threadCount), instead(std::move(standIn)) {}

WorkerPool::~WorkerPool() { shutDown(); }

void WorkerPool::post(Block block) {
  {
    MutexLock lock(mutex);
    if (ended) return;
    if (hasThread()) blocks.push_back(std::exchange(block, nullptr));
  }
  if (block) return instead(std::move(block));
  // Without the lock: the thread that wakes needs it, and would only wait for this one.
  changed.notifyOne();
}

// Starts one for the next block, unless enough of them are idle.
bool WorkerPool::hasThread() {
  const bool isNeeded = blocks.size() + busyThreads >= threads.size();
  if (!isNeeded || threads.size() == mostThreads) return true;
  try {
    threads.emplace_back([this] { work(); });
  } catch (const std::exception&) {
    // For want of threads or of memory; fewer of them do the same work.
  }
  return !threads.empty();
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
    ended = ended || threads.empty();
    changed.notifyAll();
  }
  // Until the first of them ends, blocks may start further ones.
  for (std::size_t i = 0;; ++i) {
    std::thread joined;
    {
      MutexLock lock(mutex);
      if (i == threads.size()) return;
      joined.swap(threads[i]);
    }
    if (joined.joinable()) joined.join();
  }
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
