#pragma once

#include <signal.h>

namespace quenlet {

// While it exists, threads that this thread starts get no signals: those of a process are for the
// threads of its program. Faults still are told where they happen.
class SignalsBlocked final {
 public:
  SignalsBlocked() {
    sigset_t blocked;
    ::sigfillset(&blocked);
    for (const int fault : {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGABRT, SIGTRAP, SIGSYS}) {
      ::sigdelset(&blocked, fault);
    }
    ::pthread_sigmask(SIG_BLOCK, &blocked, &before);
  }
  ~SignalsBlocked() { ::pthread_sigmask(SIG_SETMASK, &before, nullptr); }
  SignalsBlocked(const SignalsBlocked&) = delete;
  SignalsBlocked& operator=(const SignalsBlocked&) = delete;

 private:
  sigset_t before{};
};

}  // namespace quenlet
