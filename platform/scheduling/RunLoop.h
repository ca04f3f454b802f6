#pragma once

#include <functional>
#include <memory>

#include "platform/scheduling/EventLoop.h"
#include "platform/scheduling/Scheduler.h"

namespace quenlet {

// The main thread's loop: carries the main-thread scheduler, watched descriptors and signals
// (through a signalfd). SIGTERM and SIGINT make run() return once nothing holds termination any
// more, 5 s later at the latest; what is open then is named on standard error. Make it on the main
// thread before any other thread exists: from then on SIGHUP, SIGTERM and SIGINT are blocked in
// every thread and SIGPIPE and SIGXFSZ are ignored, and in child processes too, unless these set it
// right. Use on the main thread only, but for what says otherwise.
class RunLoop final {
 public:
  static constexpr double terminationGraceSeconds = 5.0;

  // Throws std::system_error when the system has no descriptor left.
  RunLoop();
  ~RunLoop();
  RunLoop(const RunLoop&) = delete;
  RunLoop& operator=(const RunLoop&) = delete;

  [[nodiscard]] EventLoop& eventLoop();
  // Not to be used once the run loop is gone. Thread-safe.
  [[nodiscard]] std::shared_ptr<Scheduler> mainThreadScheduler();
  // Calls `handler` on the main thread, while it is in run(), for each `signal` (SIGHUP, SIGTERM or
  // SIGINT) that the process gets. The kernel keeps one signal of a kind until it is read: two in a
  // row can come as one. Signals from before the call are kept and given to the first handler. A
  // handler for SIGTERM or SIGINT runs before the end. The token is not to be used once the loop is
  // gone.
  [[nodiscard]] std::shared_ptr<Cancelable> addSignalSource(int signal, Block handler);
  // Holds back the end on SIGTERM until the token is cancelled. The name, which holds may share,
  // says what for: "save". Thread-safe.
  [[nodiscard]] std::shared_ptr<Cancelable> holdTermination(const std::string& name);
  // Runs until a terminating signal or stop().
  void run();
  // Makes run() return soon, whatever holds termination. Thread-safe.
  void stop();

 private:
  struct State;
  std::unique_ptr<State> state;
};

}  // namespace quenlet
