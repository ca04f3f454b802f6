#pragma once

#include <cstdint>
#include <functional>
#include <memory>

#include "platform/foundation/Cancelable.h"
#include "platform/scheduling/Scheduler.h"

namespace quenlet {

// Waits on file descriptors and runs their handlers and posted blocks on the one thread that calls
// run(), or dispatch() when another loop drives this one. Level-triggered; epoll underneath. All
// operations but these two are thread-safe. An exception
// ends only the handler or block that throws it (see runGuarded.h); a handler that cannot do its
// part should cancel its watch, or it is called again. Destroying the loop drops blocks that have
// not run. Watches may outlive the loop.
class EventLoop final {
 public:
  // Called with the epoll events that are ready (EPOLLIN, EPOLLHUP...).
  using Handler = std::function<void(std::uint32_t readyEvents)>;

  // One watched descriptor. The caller keeps the descriptor and cancels the watch before closing
  // it.
  class Watch : public Cancelable {
   public:
    // Replaces the set of awaited epoll events. 0 pauses the watch: then not even EPOLLERR and
    // EPOLLHUP are reported. No effect after cancel().
    virtual void setEvents(std::uint32_t events) = 0;
  };

  // Throws std::system_error when the system has no descriptor left.
  EventLoop();
  ~EventLoop();
  EventLoop(const EventLoop&) = delete;
  EventLoop& operator=(const EventLoop&) = delete;

  // Calls `handler` on the loop's thread whenever `descriptor` has one of `events`. After cancel()
  // on the loop's thread the handler is not called again; after cancel() on another thread, a call
  // may still be running. If the kernel refuses to watch the descriptor, the handler gets EPOLLERR,
  // once. Dropping the token leaves the watch in place.
  [[nodiscard]] std::shared_ptr<Watch> watch(int descriptor, std::uint32_t events, Handler handler);
  // Runs `block` on the loop's thread, after those posted before.
  void post(Block block);
  // Runs handlers and blocks until stop(); blocks posted before the stop still run.
  void run();
  // Runs what is due and does not wait. descriptor() is readable as long as something is.
  void dispatch();
  [[nodiscard]] int descriptor() const;
  // Makes run() return soon. Before run(), makes the next run() return at once.
  void stop();
  [[nodiscard]] bool isLoopThread() const;

 private:
  struct State;
  std::shared_ptr<State> state;
};

}  // namespace quenlet
