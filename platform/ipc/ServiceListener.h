#pragma once

#include <sys/types.h>

#include <filesystem>
#include <memory>
#include <optional>
#include <string>

#include "platform/foundation/PropertyList.h"
#include "platform/ipc/ServiceInterface.h"
#include "platform/ipc/WireReply.h"
#include "quenlet/Error.h"

namespace quenlet {

// Performs the validated requests of a connection.
class ExportedObject {
 public:
  virtual ~ExportedObject() = default;
  // `arguments` are valid during the call only. Runs on the listener's thread, while every other
  // client waits; large requests run on its workers, several connections at a time.
  virtual void perform(const std::string& selector, WireReader arguments, WireReply reply) = 0;
};

// A refused peer gets an error for each request.
enum class PeerTreatment { served, refused };

// The service's side of one client's connection. Requests are not read before resume().
class ServiceConnection {
 public:
  virtual ~ServiceConnection() = default;
  // The peer's process when the connection was accepted.
  [[nodiscard]] virtual pid_t processIdentifier() const = 0;
  // The peer's program file; nothing when it is not known for certain.
  [[nodiscard]] virtual std::optional<std::filesystem::path> executable() const = 0;
  // The entitlement's value for the peer's program; nothing if it has none or is not known.
  [[nodiscard]] virtual std::optional<PropertyList> valueForEntitlement(
      const std::string& entitlement) const = 0;
  // Call it before resume(); the default is `served`. A refused peer's requests reach the exported
  // object without their arguments, unchecked. Its messages are limited to 4 KiB, and its
  // connection is among the first to be closed when memory is short.
  virtual void setPeerTreatment(PeerTreatment treatment) = 0;
  virtual void setExportedInterface(ServiceInterface interface) = 0;
  virtual void setExportedObject(std::shared_ptr<ExportedObject> object) = 0;
  virtual void resume() = 0;
};

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
  // Whether clients may have connected already, because a service manager listened for them. Call
  // it after claimName().
  [[nodiscard]] virtual bool mayHaveClients() const = 0;
  // From here on clients can connect. Claims the name first if needed. An error when it is taken or
  // the socket cannot be opened.
  [[nodiscard]] virtual ErrorPtr resume() = 0;
  // Takes no further connections and requests, for good; requests already taken are answered.
  // Thread-safe; does not wait.
  virtual void suspend() = 0;
};

}  // namespace quenlet
