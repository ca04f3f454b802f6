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
// process; a datagram is a notification's name. Thread-safe. Callbacks run on the event loop's
// thread and never within post(), for the poster's own process included; a token that is cancelled
// there stops its callback at once.
//
// Posts are sent on a thread of their own, so that nobody waits for a directory full of receivers;
// a name that is posted again before it was sent is sent once. A receiver's queue is short. What
// does not fit is kept here, once a name, and sent when the receiver has read some; that needs the
// loop to run, so that a process that posts and ends at once can lose what a busy receiver had no
// room for. It is kept for 32 receivers at a time, as each takes a descriptor; others that do not
// read miss it. A socket whose process is gone is removed. Descriptors that somebody attaches to a
// datagram are dropped where their end holds nobody up.
// The first failure to open the directory or the socket is told on standard error; the next
// operation tries again.
class SocketNotificationCenter final : public DistributedNotificationCenter {
 public:
  // Longer names, empty ones and names that are not UTF-8 are neither posted nor received.
  static constexpr std::size_t maximumNameSizeInBytes = 255;
  static constexpr std::size_t maximumBacklogs = 32;

  // Throws std::system_error when no thread is to be had.
  SocketNotificationCenter(EventLoop& eventLoop, std::filesystem::path directory);
  // As finish().
  ~SocketNotificationCenter() override;
  SocketNotificationCenter(const SocketNotificationCenter&) = delete;
  SocketNotificationCenter& operator=(const SocketNotificationCenter&) = delete;

  [[nodiscard]] std::shared_ptr<Cancelable> addObserver(const std::string& name,
                                                        std::function<void()> callback) override;
  void post(const std::string& name) override;
  // Sends what was posted, waiting a second at most, removes this process's socket, and takes part
  // no more. For a process that ends without this object's end.
  void finish();

 private:
  struct State;
  std::shared_ptr<State> state;
};

}  // namespace quenlet
