#pragma once

#include <functional>
#include <memory>

#include "platform/scheduling/EventLoop.h"
#include "platform/scheduling/Scheduler.h"

namespace quenlet {

// The main thread's loop: carries the main-thread scheduler, watched descriptors and signals
// (through a signalfd). SIGTERM and SIGINT make run() return once nothing holds termination any
// more, or after 5 s; the holds that are left then are named on standard error.
//
// Create it on the main thread before any other thread exists: from then on SIGHUP, SIGTERM and
// SIGINT are blocked in every thread, and SIGPIPE and SIGXFSZ are ignored. Child processes inherit
// this unless they reset it. Main thread only, except where noted.
class RunLoop final {
 public:
  static constexpr double terminationGraceSeconds = 5.0;

  // Throws std::system_error when the system has no descriptor left.
  RunLoop();
  ~RunLoop();
  RunLoop(const RunLoop&) = delete;
  RunLoop& operator=(const RunLoop&) = delete;

  [[nodiscard]] EventLoop& eventLoop();
  // Do not use it after the run loop is destroyed. Thread-safe.
  [[nodiscard]] std::shared_ptr<Scheduler> mainThreadScheduler();
  // Calls `handler` on the main thread, within run(), for each `signal` (SIGHUP, SIGTERM or SIGINT)
  // that the process gets. The kernel merges signals of one kind that have not been read, so two in
  // a row can come as one. Signals from before the call are kept for the first handler. A handler
  // for SIGTERM or SIGINT runs before run() returns. Do not use the token after the loop is
  // destroyed.
  [[nodiscard]] std::shared_ptr<Cancelable> addSignalSource(int signal, Block handler);
  // Delays the end on SIGTERM and SIGINT until the token is cancelled. The name says what for
  // ("save"); holds may share one. Thread-safe.
  [[nodiscard]] std::shared_ptr<Cancelable> holdTermination(const std::string& name);
  // Runs until a terminating signal or stop().
  void run();
  // Makes run() return soon, despite any holds. Thread-safe.
  void stop();

 private:
  struct State;
  std::unique_ptr<State> state;
};

}  // namespace quenlet
