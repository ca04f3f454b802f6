#include "platform/scheduling/PoolSchedulers.h"

#include <deque>
#include <optional>
#include <utility>

#include "platform/foundation/Mutex.h"
#include "platform/scheduling/CancelableBlock.h"
#include "platform/scheduling/runGuarded.h"

namespace quenlet {
namespace {

enum class Access { reader, writer };
enum class Caller { submitter, endingBlock };

struct Job {
  Access access;
  std::shared_ptr<CancelableBlock> block;  // null: a synchronous reader waits to be told
  bool* turnHasCome;                       // that reader's flag
};

}  // namespace

// The life of a job:
//
//   submit() ──> waiting ──admit()──> ready ──runReady(), on the pool────────> runs ──> finish()
//                   ^                     └──run(), by a synchronous reader──────^         │
//                   └──────────────────── admits those whose turn it is now ───────────────┘
//
// `activeReaders` and `writerActive` count a job from its admission on, not from its start:
// all jobs in `ready` may run at the same time. Each job in `ready` has posted one runReady(),
// which finds nothing when a synchronous reader has taken a job meanwhile.
struct PooledReaderWriterScheduler::State : std::enable_shared_from_this<State> {
  explicit State(std::shared_ptr<WorkerPool> workers) : pool(std::move(workers)) {}

  std::shared_ptr<Cancelable> submit(Access access, Block block) EXCLUDES(mutex) {
    auto token = std::make_shared<CancelableBlock>(std::move(block));
    MutexLock lock(mutex);
    waiting.push_back({access, token, nullptr});
    admit();
    return token;
  }

  void runSynchronously(const Block& block) EXCLUDES(mutex) {
    if (!startAtOnce()) waitForTurn();
    try {
      block();
    } catch (...) {
      finish(Access::reader, Caller::submitter);
      throw;
    }
    finish(Access::reader, Caller::submitter);
  }

  bool startAtOnce() EXCLUDES(mutex) {
    MutexLock lock(mutex);
    const bool starts = waiting.empty() && mayStart(Access::reader);
    if (starts) ++activeReaders;
    return starts;
  }

  void waitForTurn() EXCLUDES(mutex) {
    // Safe on this stack: the wait ends only after admit() has set it.
    bool turnHasCome = false;
    {
      MutexLock lock(mutex);
      waiting.push_back({Access::reader, nullptr, &turnHasCome});
      ++synchronousReaders;
      admit();
    }
    while (const std::optional<Job> job = nextBefore(turnHasCome)) run(*job, Caller::submitter);
  }

  // A job for a synchronous reader to run while it waits; nothing once its own turn has come.
  std::optional<Job> nextBefore(const bool& turnHasCome) EXCLUDES(mutex) {
    MutexLock lock(mutex);
    while (!turnHasCome && ready.empty()) changed.wait(mutex);
    if (!turnHasCome) return takeReady();
    --synchronousReaders;
    return std::nullopt;
  }

  void runReady() EXCLUDES(mutex) {
    Job job{};
    {
      MutexLock lock(mutex);
      if (ready.empty()) return;
      job = takeReady();
    }
    run(job, Caller::endingBlock);
  }

  void run(const Job& job, Caller caller) EXCLUDES(mutex) {
    runGuarded([&job] { job.block->run(); });
    finish(job.access, caller);
  }

  Job takeReady() REQUIRES(mutex) {
    Job job = std::move(ready.front());
    ready.pop_front();
    return job;
  }

  // Without the memory to admit the next jobs they would wait forever, so the process ends
  // (noexcept).
  void finish(Access access, Caller caller) noexcept EXCLUDES(mutex) {
    MutexLock lock(mutex);
    if (access == Access::writer) {
      writerActive = false;
    } else {
      --activeReaders;
    }
    admit(caller);
  }

  bool mayStart(Access access) const REQUIRES(mutex) {
    return !writerActive && (access == Access::reader || activeReaders == 0);
  }

  void admit(Caller caller = Caller::submitter) noexcept REQUIRES(mutex) {
    bool anyone = false;
    while (!waiting.empty() && mayStart(waiting.front().access)) {
      Job job = std::move(waiting.front());
      waiting.pop_front();
      if (job.access == Access::writer) {
        writerActive = true;
      } else {
        ++activeReaders;
      }
      if (job.turnHasCome != nullptr) {
        *job.turnHasCome = true;
      } else {
        ready.push_back(std::move(job));
        const auto next = [self = shared_from_this()] { self->runReady(); };
        // The pool thread whose job ends takes the first of them itself. A synchronous reader
        // cannot: its thread goes back to its caller.
        if (std::exchange(caller, Caller::submitter) == Caller::endingBlock) {
          pool->postLast(next);
        } else {
          pool->post(next);
        }
      }
      anyone = true;
    }
    // Their turn may have come, or there is a job to run while they wait.
    if (anyone && synchronousReaders > 0) changed.notifyAll();
  }

  const std::shared_ptr<WorkerPool> pool;
  Mutex mutex;
  ConditionVariable changed;
  std::deque<Job> waiting GUARDED_BY(mutex);
  std::deque<Job> ready GUARDED_BY(mutex);
  std::size_t activeReaders GUARDED_BY(mutex) = 0;
  std::size_t synchronousReaders GUARDED_BY(mutex) = 0;
  bool writerActive GUARDED_BY(mutex) = false;
};

PooledReaderWriterScheduler::PooledReaderWriterScheduler(std::shared_ptr<WorkerPool> pool,
                                                         std::string debugName)
    : schedulerName(std::move(debugName)), state(std::make_shared<State>(std::move(pool))) {}

std::shared_ptr<Cancelable> PooledReaderWriterScheduler::performWriterBlock(Block block) {
  return state->submit(Access::writer, std::move(block));
}

std::shared_ptr<Cancelable> PooledReaderWriterScheduler::performReaderBlock(Block block) {
  return state->submit(Access::reader, std::move(block));
}

void PooledReaderWriterScheduler::performSynchronousReaderBlock(const Block& block) {
  const std::shared_ptr<State> held = state;
  held->runSynchronously(block);
}

}  // namespace quenlet
