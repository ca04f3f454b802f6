#pragma once

#include <memory>
#include <string>
#include <utility>

#include "core/maintenance/DonationMaintenanceProtocol.h"
#include "platform/ipc/ServiceConnection.h"

namespace quenlet {

// Turns a maintainer's requests into calls of the agent, and its answers into replies. Immutable;
// called on the listener's thread.
class MaintenanceDispatcher final : public ExportedObject {
 public:
  explicit MaintenanceDispatcher(std::shared_ptr<DonationMaintenanceProtocol> exportedAgent)
      : agent(std::move(exportedAgent)) {}

  void perform(const std::string& selector, WireReader arguments, WireReply reply) override;

 private:
  const std::shared_ptr<DonationMaintenanceProtocol> agent;
};

}  // namespace quenlet
