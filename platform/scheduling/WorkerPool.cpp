#include "platform/scheduling/WorkerPool.h"

#include <algorithm>
#include <utility>

namespace quenlet {
namespace {

// Whose thread this is; null for all others.
thread_local const WorkerPool* poolOfThisThread = nullptr;

}  // namespace

std::size_t WorkerPool::usualThreadCount() {
  return std::clamp<std::size_t>(std::thread::hardware_concurrency(), 2, 4);
}

WorkerPool::WorkerPool(std::size_t threadCount) {
  threads.reserve(threadCount);
  for (std::size_t i = 0; i < threadCount; ++i) threads.emplace_back([this] { work(); });
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

// A thread ends only when no other one is busy: a busy one may still post.
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
    block();
    block = nullptr;
    MutexLock lock(mutex);
    --busyThreads;
    if (ending && busyThreads == 0 && blocks.empty()) changed.notifyAll();
  }
}

}  // namespace quenlet
