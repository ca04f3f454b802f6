#include "core/maintenance/MaintenanceService.h"

#include <utility>

#include "core/maintenance/MaintenanceInterface.h"
#include "core/maintenance/MaintenanceListenerDelegate.h"
#include "platform/PlatformServices.h"

namespace quenlet {

MaintenanceService::MaintenanceService()
    : serviceListener(PlatformServices::current().makeServiceListener(MaintenanceServiceName)),
      agentLogger(PlatformServices::current().defaultLoggerProvider()->agentLogger()) {}

MaintenanceService::~MaintenanceService() { agentLogger->maintenanceServiceWillStop(); }

ErrorPtr MaintenanceService::start() {
  agentLogger->maintenanceServiceWillStart();
  setListenerDelegate(std::make_shared<ListenerDelegate>(exportedAgent));
  if (ErrorPtr error = serviceListener->resume()) return error;
  agentLogger->maintenanceServiceDidStart();
  return nullptr;
}

void MaintenanceService::setListenerDelegate(std::shared_ptr<ListenerDelegate> newDelegate) {
  delegate = std::move(newDelegate);
  serviceListener->setDelegate(delegate);
}

bool MaintenanceService::shouldAcceptNewConnection(
    ServiceListener& listener, const std::shared_ptr<ServiceConnection>& newConnection) {
  return ListenerDelegate(exportedAgent).shouldAcceptNewConnection(listener, newConnection);
}

ServiceInterface MaintenanceService::makeConfiguredInterface() {
  return makeMaintenanceInterface();
}

}  // namespace quenlet
