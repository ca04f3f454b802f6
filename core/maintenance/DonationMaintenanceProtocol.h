#pragma once

#include <string>
#include <vector>

#include "quenlet/Result.h"

namespace quenlet {

// The operations of the maintenance service. Implementations say on which thread they run.
class DonationMaintenanceProtocol {
 public:
  virtual ~DonationMaintenanceProtocol() = default;
  [[nodiscard]] virtual Result<std::vector<std::string>> extensionIdentifiers() = 0;
};

}  // namespace quenlet
