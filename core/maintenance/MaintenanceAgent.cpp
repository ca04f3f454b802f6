#include "core/maintenance/MaintenanceAgent.h"

namespace quenlet {

Result<std::vector<std::string>> MaintenanceAgent::extensionIdentifiers() {
  return Result<std::vector<std::string>>::success({"hello", "world"});
}

}  // namespace quenlet
