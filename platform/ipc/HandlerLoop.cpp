#include "platform/ipc/HandlerLoop.h"

#include <signal.h>

namespace quenlet {
namespace {

// The program's signals are for its own threads.
class SignalsBlocked final {
 public:
  SignalsBlocked() {
    sigset_t all;
    ::sigfillset(&all);
    ::pthread_sigmask(SIG_SETMASK, &all, &before);
  }
  ~SignalsBlocked() { ::pthread_sigmask(SIG_SETMASK, &before, nullptr); }
  SignalsBlocked(const SignalsBlocked&) = delete;
  SignalsBlocked& operator=(const SignalsBlocked&) = delete;

 private:
  sigset_t before{};
};

}  // namespace

HandlerLoop::HandlerLoop(Thread thread) {
  if (thread == Thread::callers) return;
  const SignalsBlocked blocked;
  ownThread = std::thread([running = shared] { running->events.run(); });
}

HandlerLoop::~HandlerLoop() {
  if (ownThread.joinable()) {
    shared->events.stop();
    ownThread.join();
  } else {
    shared->events.dispatch();
  }
}

}  // namespace quenlet
