#include "core/maintenance/MaintenanceListenerDelegate.h"

#include "core/maintenance/MaintenanceDispatcher.h"
#include "platform/PlatformServices.h"

namespace quenlet {

bool MaintenanceService::ListenerDelegate::shouldAcceptNewConnection(
    ServiceListener&, const std::shared_ptr<ServiceConnection>& newConnection) {
  PlatformServices::current()
      .defaultLoggerProvider()
      ->agentLogger()
      ->acceptingConnectionFromProcess(newConnection->processIdentifier());
  newConnection->setExportedInterface(makeConfiguredInterface());
  newConnection->setExportedObject(std::make_shared<MaintenanceDispatcher>(agent));
  newConnection->resume();
  return true;
}

}  // namespace quenlet
