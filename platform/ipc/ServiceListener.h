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
  // Makes the name this process's own for the listener's life, before clients can connect. An error
  // (nameTaken) when another process has it.
  [[nodiscard]] virtual ErrorPtr claimName() = 0;
  // From here on clients can connect. Claims the name unless that is done. An error when it is
  // taken or cannot be opened.
  [[nodiscard]] virtual ErrorPtr resume() = 0;
  // From here on no connection and no further request is taken; what was taken is answered. For
  // good; thread-safe, at once.
  virtual void suspend() = 0;
};

}  // namespace quenlet
