#pragma once

#include "platform/ipc/ServiceInterface.h"

// The maintenance service as it stands on the wire.
namespace quenlet {

inline constexpr char MaintenanceServiceName[] = "ovaro.quenlet.maintenance";

namespace MaintenanceSelector {
// No arguments; replies a list of texts or null, and an error or null.
inline constexpr char extensionIdentifiers[] = "extensionIdentifiers:";
}  // namespace MaintenanceSelector

[[nodiscard]] ServiceInterface makeMaintenanceInterface();

}  // namespace quenlet
