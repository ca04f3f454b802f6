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
// A receiver's queue is short. What does not fit is kept here, once a name, and sent when the
// receiver has read some; that needs the loop to run, so that a process that posts and ends at once
// can lose what a busy receiver had no room for. A socket whose process is gone is removed.
// The first failure to open the directory or the socket is told on standard error; the next
// operation tries again.
class SocketNotificationCenter final : public DistributedNotificationCenter {
 public:
  // Longer names, empty ones and names that are not UTF-8 are neither posted nor received.
  static constexpr std::size_t maximumNameSizeInBytes = 255;

  SocketNotificationCenter(EventLoop& eventLoop, std::filesystem::path directory);
  ~SocketNotificationCenter() override;
  SocketNotificationCenter(const SocketNotificationCenter&) = delete;
  SocketNotificationCenter& operator=(const SocketNotificationCenter&) = delete;

  [[nodiscard]] std::shared_ptr<Cancelable> addObserver(const std::string& name,
                                                        std::function<void()> callback) override;
  void post(const std::string& name) override;

 private:
  struct State;
  std::shared_ptr<State> state;
};

}  // namespace quenlet
