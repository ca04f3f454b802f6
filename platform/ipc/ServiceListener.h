#pragma once

#include <memory>

#include "platform/foundation/Error.h"
#include "platform/ipc/ServiceConnection.h"

namespace quenlet {

class ServiceListener;

class ServiceListenerDelegate {
 public:
  virtual ~ServiceListenerDelegate() = default;
  // `listener:shouldAcceptNewConnection:`. Configures and resumes the connection and answers true,
  // or answers false to close it. Runs on the listener's thread.
  [[nodiscard]] virtual bool shouldAcceptNewConnection(
      ServiceListener& listener, const std::shared_ptr<ServiceConnection>& newConnection) = 0;
};

// Accepts the connections of a named service's clients.
class ServiceListener {
 public:
  virtual ~ServiceListener() = default;
  // Held weakly: the caller keeps the delegate.
  virtual void setDelegate(std::weak_ptr<ServiceListenerDelegate> delegate) = 0;
  // From here on clients can connect. An error when the name is taken or cannot be opened.
  [[nodiscard]] virtual ErrorPtr resume() = 0;
};

}  // namespace quenlet
