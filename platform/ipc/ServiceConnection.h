#pragma once

#include <sys/types.h>

#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "platform/foundation/PropertyList.h"
#include "platform/ipc/ServiceInterface.h"

namespace quenlet {

// Sends the encoded reply values of one request. Called once, on any thread; when it is dropped
// uncalled, the caller gets the noReply error. After the connection ended it does nothing.
using WireReply = std::function<void(std::string encodedValues)>;

// What a service exports on a connection: takes validated requests.
class ExportedObject {
 public:
  virtual ~ExportedObject() = default;
  // `arguments` are good for the call. Runs on the listener's thread: every
  // other client waits meanwhile.
  virtual void perform(const std::string& selector, WireReader arguments, WireReply reply) = 0;
};

// The service's side of one client's connection. Requests are not read before resume().
class ServiceConnection {
 public:
  virtual ~ServiceConnection() = default;
  // Of the peer, as it was when the connection was accepted.
  [[nodiscard]] virtual pid_t processIdentifier() const = 0;
  // The peer's program file; nothing when it could not be told with certainty.
  [[nodiscard]] virtual std::optional<std::filesystem::path> executable() const = 0;
  // The value that the peer's executable has for an entitlement; nothing for none.
  [[nodiscard]] virtual std::optional<PropertyList> valueForEntitlement(
      const std::string& entitlement) const = 0;
  virtual void setExportedInterface(ServiceInterface interface) = 0;
  virtual void setExportedObject(std::shared_ptr<ExportedObject> object) = 0;
  virtual void resume() = 0;
};

}  // namespace quenlet
