#pragma once

#include <systemd/sd-event.h>

#include <functional>
#include <memory>
#include <set>

#include "platform/foundation/Cancelable.h"
#include "platform/scheduling/Scheduler.h"
#include "quenlet/Error.h"

namespace quenlet {

// The loop of a program that lives on the bus: connections, descriptors, timers and signals, all on
// the one thread that calls run(). It is systemd's event loop and not an EventLoop of ours, since
// what a connection waits for changes with each message that is sent, and only that loop asks it
// before each wait. An EventLoop is driven from here: watch() its descriptor() and dispatch() it.
//
// Handlers that throw end alone (see runGuarded.h). Use on one thread. Must outlive what was
// attached to it, tokens excepted.
class BusLoop final {
 public:
  // Throws std::system_error when the system has no descriptor left.
  BusLoop();
  ~BusLoop();
  BusLoop(const BusLoop&) = delete;
  BusLoop& operator=(const BusLoop&) = delete;

  // `afterMessages`: only while no message of a connection waits.
  enum class Turn { usual, afterMessages };

  // Calls the handler whenever the descriptor is readable, until the token is cancelled. The
  // owner of the descriptor cancels before closing it. Throws std::system_error, as the others do.
  [[nodiscard]] std::shared_ptr<Cancelable> watch(int descriptor, Block handler,
                                                  Turn turn = Turn::usual);
  // Calls the block once, unless the token is cancelled first.
  std::shared_ptr<Cancelable> after(double delaySeconds, Block block);
  // Blocks the signal and calls the handler for it instead. Call it before other threads start.
  std::shared_ptr<Cancelable> onSignal(int signal, Block handler);

  // Runs until stop(), or until a connection of the loop has ended: then an error.
  [[nodiscard]] ErrorPtr run();
  void stop();

  // For what the bus library attaches to it.
  [[nodiscard]] sd_event* handle() const { return event; }

 private:
  class Source;
  std::shared_ptr<Source> add(Block handler, bool isOnce);

  sd_event* event = nullptr;
  std::set<std::shared_ptr<Source>> sources;
};

}  // namespace quenlet
