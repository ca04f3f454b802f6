#include "platform/scheduling/PatientThread.h"

#include <deque>
#include <system_error>
#include <thread>
#include <utility>

#include "platform/scheduling/SignalsBlocked.h"

namespace quenlet {

struct PatientThread::State final {
  Mutex mutex;
  ConditionVariable changed;
  // The first one is running.
  std::deque<Block> blocks GUARDED_BY(mutex);
  bool ending GUARDED_BY(mutex) = false;
  bool hasThread GUARDED_BY(mutex) = false;

  // Null when nothing is left to do and the owner is gone.
  Block* next() EXCLUDES(mutex) {
    MutexLock lock(mutex);
    while (blocks.empty() && !ending && hasThread) changed.wait(mutex);
    return blocks.empty() ? nullptr : &blocks.front();
  }

  void run() EXCLUDES(mutex) {
    // push_back() leaves the first element where it is, so the block can run without the lock. It
    // is removed only afterwards, so that pendingBlocks() counts it.
    while (Block* const block = next()) {
      std::exchange(*block, nullptr)();
      MutexLock lock(mutex);
      blocks.pop_front();
    }
  }

  static void start(const std::shared_ptr<State>& state) EXCLUDES(state->mutex) {
    MutexLock lock(state->mutex);
    if (std::exchange(state->hasThread, true)) return;
    const SignalsBlocked blocked;
    try {
      std::thread([held = state] { held->run(); }).detach();
    } catch (...) {
      state->hasThread = false;
      throw;
    }
  }
};

PatientThread::PatientThread(Start start) : state(std::make_shared<State>()) {
  if (start == Start::now) State::start(state);
}

PatientThread::~PatientThread() {
  MutexLock lock(state->mutex);
  state->ending = true;
  state->changed.notifyAll();
}

void PatientThread::perform(Block block) {
  {
    MutexLock lock(state->mutex);
    state->blocks.push_back(std::move(block));
    state->changed.notifyAll();
  }
  try {
    State::start(state);
  } catch (const std::system_error&) {
    state->run();
  }
}

void PatientThread::close(FileDescriptor descriptor) {
  perform([held = std::make_shared<FileDescriptor>(std::move(descriptor))] { held->reset(); });
}

std::size_t PatientThread::pendingBlocks() const {
  MutexLock lock(state->mutex);
  return state->blocks.size();
}

}  // namespace quenlet
