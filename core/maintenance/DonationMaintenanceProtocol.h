#pragma once

#include <string>
#include <vector>

#include "platform/foundation/Either.h"

namespace quenlet {

// What a maintainer may ask. Implementations say on which thread.
class DonationMaintenanceProtocol {
 public:
  virtual ~DonationMaintenanceProtocol() = default;
  [[nodiscard]] virtual Result<std::vector<std::string>> extensionIdentifiers() = 0;
};

}  // namespace quenlet
