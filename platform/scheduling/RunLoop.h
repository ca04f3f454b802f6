#pragma once

#include <functional>
#include <memory>

#include "platform/scheduling/EventLoop.h"
#include "platform/scheduling/Scheduler.h"

namespace quenlet {

// The main thread's loop: carries the main-thread scheduler, watched descriptors and signals
// (through a signalfd). SIGTERM and SIGINT make run() return once nothing holds termination any
// more, 5 s later at the latest. Make it on the main thread before any other thread exists: from
// then on SIGHUP, SIGTERM and SIGINT are blocked in every thread and SIGPIPE is ignored.
class RunLoop final {
 public:
  static constexpr double terminationGraceSeconds = 5.0;

  RunLoop();
  ~RunLoop();
  RunLoop(const RunLoop&) = delete;
  RunLoop& operator=(const RunLoop&) = delete;

  [[nodiscard]] EventLoop& eventLoop();
  [[nodiscard]] std::shared_ptr<Scheduler> mainThreadScheduler();
  // Calls `handler` on the main thread for each `signal` (SIGHUP, SIGTERM or SIGINT) received from
  // resume() on; hang-ups before that are kept. A handler for SIGTERM or SIGINT runs before the
  // end.
  [[nodiscard]] std::shared_ptr<Cancelable> addSignalSource(int signal, Block handler);
  // Holds back the end on SIGTERM until the token is cancelled. Thread-safe.
  [[nodiscard]] std::shared_ptr<Cancelable> holdTermination();
  // Runs until a terminating signal or stop().
  void run();
  void stop();

 private:
  struct State;
  std::unique_ptr<State> state;
};

}  // namespace quenlet
