#pragma once

#include <cstddef>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>

#include "platform/notifications/DistributedNotificationCenter.h"
#include "platform/scheduling/EventLoop.h"

namespace quenlet {

// Notifications over datagram sockets in a private directory, one socket for each observing
// process; a datagram is the name of a notification. Thread-safe. Callbacks run on the event loop's
// thread and never within post(), even in the poster's own process; cancelling a token there stops
// its callback at once.
//
//   post() ──> posted ──sender thread──> socket of each process ──its loop──> callbacks
//                              │ its queue is full    ^
//                              └───────> backlog ─────┘ this loop, when it has room
//
// post() never waits, however many receivers there are; a name that is posted again before it was
// sent is sent once. The backlog holds each name once, for up to 32 receivers at a time, as each
// takes a descriptor; others that do not read miss the notification. Sending the backlog needs the
// loop to run: when a process posts and ends at once, a busy receiver can miss it, too. The socket
// of a process that is gone is removed. Descriptors that somebody attaches to a datagram are closed
// on a thread that may block.
//
// The first failure to open the directory or the socket is reported on standard error; the next
// post() or addObserver() tries again.
class SocketNotificationCenter final : public DistributedNotificationCenter {
 public:
  static constexpr std::size_t maximumBacklogs = 32;

  SocketNotificationCenter(EventLoop& eventLoop, std::filesystem::path directory);
  // As finish().
  ~SocketNotificationCenter() override;
  SocketNotificationCenter(const SocketNotificationCenter&) = delete;
  SocketNotificationCenter& operator=(const SocketNotificationCenter&) = delete;

  [[nodiscard]] std::shared_ptr<Cancelable> addObserver(const std::string& name,
                                                        std::function<void()> callback) override;
  void post(const std::string& name) override;
  // Waits up to a second until the posts so far are sent, removes this process's socket, and stops
  // taking part. For a process that ends without destroying this object.
  void finish();

 private:
  struct State;
  std::shared_ptr<State> state;
};

}  // namespace quenlet
