#include "core/maintenance/MaintenanceInterface.h"

#include "platform/ipc/ErrorWire.h"

namespace quenlet {

ServiceInterface makeMaintenanceInterface() {
  const WireParameter identifiers{WireType::list, true};
  const WireParameter error{WireType::object, true, {ErrorWire::className}};
  ServiceInterface interface;
  interface.addOperation(MaintenanceSelector::extensionIdentifiers, {}, {identifiers, error});
  return interface;
}

}  // namespace quenlet
