#include "platform/ipc/HandlerLoop.h"

#include <utility>

#include "platform/scheduling/SignalsBlocked.h"

namespace quenlet {

HandlerLoop::HandlerLoop(Thread thread) {
  if (thread == Thread::callers) return;
  const SignalsBlocked blocked;
  ownThread = std::thread([running = shared] { running->events.run(); });
}

HandlerLoop::~HandlerLoop() { finish(); }

void HandlerLoop::finish() {
  if (std::exchange(hasFinished, true)) return;
  if (ownThread.joinable()) {
    shared->events.stop();
    ownThread.join();
  } else {
    shared->events.dispatch();
  }
}

}  // namespace quenlet
