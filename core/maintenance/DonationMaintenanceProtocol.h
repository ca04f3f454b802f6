#pragma once

#include <string>
#include <vector>

#include "quenlet/Result.h"

namespace quenlet {

inline constexpr char MaintenanceServiceName[] = "ovaro.quenlet.maintenance";

namespace MaintenanceSelector {

// No arguments; replies a list of texts or null, and an error or null.
inline constexpr char extensionIdentifiers[] = "extensionIdentifiers:";

}  // namespace MaintenanceSelector

// The operations of the maintenance service. Implementations say on which thread they run.
class DonationMaintenanceProtocol {
 public:
  virtual ~DonationMaintenanceProtocol() = default;
  [[nodiscard]] virtual Result<std::vector<std::string>> extensionIdentifiers() = 0;
};

}  // namespace quenlet
