#pragma once

#include <chrono>
#include <functional>
#include <memory>

#include "platform/foundation/Cancelable.h"
#include "platform/foundation/FileDescriptor.h"
#include "platform/ipc/ServiceAddress.h"
#include "platform/scheduling/EventLoop.h"

namespace quenlet {

// Notices at once when the user's agent appears and when it ends, however it ends: keeps a
// connection on which it asks nothing. Use on the loop's thread; the loop outlives it.
class AgentPresence final {
 public:
  using Pause = std::function<void(std::chrono::milliseconds)>;
  using Handler = std::function<void(bool isThere)>;

  // `onChange` runs on the loop's thread, from its next turn on. It is told of the next agent only
  // if that one took the place of another without a gap.
  AgentPresence(EventLoop& eventLoop, ServiceAddress agentAddress, Pause pause, Handler onChange);
  ~AgentPresence();
  AgentPresence(const AgentPresence&) = delete;
  AgentPresence& operator=(const AgentPresence&) = delete;

  [[nodiscard]] bool isThere() const { return connection.isOpen(); }

 private:
  void connect();
  void noticeEntry(const std::string& name);
  void noticeEnd();

  EventLoop& loop;
  const ServiceAddress address;
  const Pause waitFor;
  const Handler changed;
  FileDescriptor connection;
  std::chrono::steady_clock::time_point since;
  std::shared_ptr<EventLoop::Watch> watch;
  std::shared_ptr<Cancelable> directoryWatch;
};

}  // namespace quenlet
