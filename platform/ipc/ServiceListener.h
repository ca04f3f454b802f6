#pragma once

#include <memory>

#include "platform/ipc/ServiceConnection.h"
#include "quenlet/Error.h"

namespace quenlet {

class ServiceListener;

class ServiceListenerDelegate {
 public:
  virtual ~ServiceListenerDelegate() = default;
  // `listener:shouldAcceptNewConnection:`. Configures and resumes the connection and returns true,
  // or returns false to have it closed. Runs on the listener's thread.
  [[nodiscard]] virtual bool shouldAcceptNewConnection(
      ServiceListener& listener, const std::shared_ptr<ServiceConnection>& newConnection) = 0;
};

// Accepts the connections of a named service's clients.
class ServiceListener {
 public:
  virtual ~ServiceListener() = default;
  // Held weakly: the caller keeps the delegate.
  virtual void setDelegate(std::weak_ptr<ServiceListenerDelegate> delegate) = 0;
  // Reserves the name for this process, for the listener's life, before clients can connect. A
  // nameTaken error when another process has it.
  [[nodiscard]] virtual ErrorPtr claimName() = 0;
  // From here on clients can connect. Claims the name first if needed. An error when it is taken or
  // the socket cannot be opened.
  [[nodiscard]] virtual ErrorPtr resume() = 0;
  // Takes no further connections and requests, for good; requests already taken are answered.
  // Thread-safe; does not wait.
  virtual void suspend() = 0;
};

}  // namespace quenlet
