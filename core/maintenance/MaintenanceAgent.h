#pragma once

#include "core/maintenance/DonationMaintenanceProtocol.h"

namespace quenlet {

// Answers maintainers, with two fixed identifiers: it shows that the service is there, and knows
// nothing of installed extensions. Stateless; any thread.
class MaintenanceAgent final : public DonationMaintenanceProtocol {
 public:
  // "hello", "world"; never an error.
  [[nodiscard]] Result<std::vector<std::string>> extensionIdentifiers() override;
};

}  // namespace quenlet
