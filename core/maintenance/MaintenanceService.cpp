#include "core/maintenance/MaintenanceService.h"

#include "platform/PlatformServices.h"
#include "platform/ipc/ErrorWire.h"
#include "platform/ipc/WireEncoder.h"

namespace quenlet {
namespace {

// Turns a maintainer's requests into calls of the agent, and its answers into replies. Immutable;
// called on the listener's thread.
class MaintenanceDispatcher final : public ExportedObject {
 public:
  explicit MaintenanceDispatcher(std::shared_ptr<DonationMaintenanceProtocol> exportedAgent)
      : agent(std::move(exportedAgent)) {}

  void perform(const std::string&, WireReader, WireReply reply) override;

 private:
  const std::shared_ptr<DonationMaintenanceProtocol> agent;
};

// The interface has one operation, and the connection has checked that this is it.
void MaintenanceDispatcher::perform(const std::string&, WireReader, WireReply reply) {
  const Result<std::vector<std::string>> identifiers = agent->extensionIdentifiers();
  WireEncoder encoder;
  if (identifiers.ok()) {
    encoder.list(identifiers.value().size());
    for (const std::string& identifier : identifiers.value()) encoder.string(identifier);
    ErrorWire::encode(encoder, nullptr);
  } else {
    encoder.null();
    ErrorWire::encode(encoder, identifiers.error());
  }
  reply(std::move(encoder).take());
}

}  // namespace

class MaintenanceService::ListenerDelegate final : public ServiceListenerDelegate {
 public:
  explicit ListenerDelegate(std::shared_ptr<DonationMaintenanceProtocol> exportedAgent)
      : agent(std::move(exportedAgent)) {}

  bool shouldAcceptNewConnection(ServiceListener& listener,
                                 const std::shared_ptr<ServiceConnection>& newConnection) override;

 private:
  const std::shared_ptr<DonationMaintenanceProtocol> agent;
};

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

Result<std::vector<std::string>> MaintenanceAgent::extensionIdentifiers() {
  return Result<std::vector<std::string>>::success({"hello", "world"});
}

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
  const WireParameter identifiers{WireType::list, true};
  const WireParameter error{WireType::object, true, {ErrorWire::className}};
  ServiceInterface interface;
  interface.addOperation(MaintenanceSelector::extensionIdentifiers, {}, {identifiers, error});
  return interface;
}

}  // namespace quenlet
