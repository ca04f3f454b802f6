#pragma once

#include <memory>
#include <utility>

#include "core/maintenance/MaintenanceService.h"

namespace quenlet {

// Accepts every connection to the maintenance service and exports the agent on it. Immutable;
// called on the listener's thread.
class MaintenanceService::ListenerDelegate final : public ServiceListenerDelegate {
 public:
  explicit ListenerDelegate(std::shared_ptr<DonationMaintenanceProtocol> exportedAgent)
      : agent(std::move(exportedAgent)) {}

  bool shouldAcceptNewConnection(ServiceListener& listener,
                                 const std::shared_ptr<ServiceConnection>& newConnection) override;

 private:
  const std::shared_ptr<DonationMaintenanceProtocol> agent;
};

}  // namespace quenlet
