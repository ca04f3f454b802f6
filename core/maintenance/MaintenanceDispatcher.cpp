#include "core/maintenance/MaintenanceDispatcher.h"

#include "platform/ipc/ErrorWire.h"
#include "platform/ipc/WireEncoder.h"

namespace quenlet {

// The interface has one operation, and the connection has checked that this is it.
void MaintenanceDispatcher::perform(const std::string&, WireReader, WireReply reply) {
  const Result<std::vector<std::string>> identifiers = agent->extensionIdentifiers();
  WireEncoder encoder;
  if (identifiers.ok()) {
    encoder.list(identifiers.value().size());
    for (const std::string& identifier : identifiers.value()) encoder.string(identifier);
    ErrorWire::encode(encoder, nullptr);
  } else {
    encoder.null();
    ErrorWire::encode(encoder, identifiers.error());
  }
  reply(std::move(encoder).take());
}

}  // namespace quenlet
