#pragma once

#include <sys/types.h>

#include <filesystem>
#include <memory>
#include <optional>
#include <string>

#include "platform/foundation/PropertyList.h"
#include "platform/ipc/ServiceInterface.h"
#include "platform/ipc/WireReply.h"

namespace quenlet {

// What a service exports on a connection: takes validated requests.
class ExportedObject {
 public:
  virtual ~ExportedObject() = default;
  // `arguments` are good for the call. Runs on the listener's thread, where every other client
  // waits meanwhile, or for a large request on one of its workers, then of several connections at a
  // time.
  virtual void perform(const std::string& selector, WireReader arguments, WireReply reply) = 0;
};

// What a service does for a peer: what it asks for, or nothing, other than to say so each time.
enum class PeerTreatment { served, refused };

// The service's side of one client's connection. Requests are not read before resume().
class ServiceConnection {
 public:
  virtual ~ServiceConnection() = default;
  // Of the peer, as it was when the connection was accepted.
  [[nodiscard]] virtual pid_t processIdentifier() const = 0;
  // The peer's program file; nothing when it could not be told with certainty.
  [[nodiscard]] virtual std::optional<std::filesystem::path> executable() const = 0;
  // The value that the peer's executable has for an entitlement; nothing for none, and for a peer
  // that is refused.
  [[nodiscard]] virtual std::optional<PropertyList> valueForEntitlement(
      const std::string& entitlement) const = 0;
  // `served`, unless this says otherwise before resume(). The exported object gets a refused peer's
  // requests without their arguments, which nobody looks at; the peer's messages may be 4 KiB long,
  // and its connection is the first to end when memory runs short.
  virtual void setPeerTreatment(PeerTreatment treatment) = 0;
  virtual void setExportedInterface(ServiceInterface interface) = 0;
  virtual void setExportedObject(std::shared_ptr<ExportedObject> object) = 0;
  virtual void resume() = 0;
};

}  // namespace quenlet
