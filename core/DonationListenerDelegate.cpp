#include "core/DonationListenerDelegate.h"

#include "core/CorvelEntitlementDecorator.h"
#include "platform/PlatformServices.h"
#include "protocol/AccountWire.h"
#include "protocol/ClientEntitlements.h"
#include "protocol/CorvelInterface.h"
#include "protocol/DonationWire.h"

namespace quenlet {

DonationListenerDelegate::DonationListenerDelegate(
    std::shared_ptr<AgentEnvironmentProtocol> gateEnvironment,
    std::shared_ptr<CorvelProtocol> exportedAgent, LimitedAgent exportedLimitedAgent)
    : environment(std::move(gateEnvironment)),
      agent(std::move(exportedAgent)),
      limitedAgent(std::move(exportedLimitedAgent)) {
  // The environment makes the logger at the first read, which must not race: gates read it on the
  // listener's thread.
  static_cast<void>(environment->logger());
}

bool DonationListenerDelegate::shouldAcceptNewConnection(
    ServiceListener&, const std::shared_ptr<ServiceConnection>& newConnection) {
  PlatformServices::current()
      .defaultLoggerProvider()
      ->agentLogger()
      ->acceptingConnectionFromProcess(newConnection->processIdentifier());
  const auto limit =
      BundleLimit::ofEntitlement(newConnection->valueForEntitlement(BundlesEntitlement));
  auto gate = std::make_shared<CorvelEntitlementDecorator>(
      *environment, limit ? limitedAgent(*limit) : agent,
      // Weakly, since the connection owns the gate.
      [connection = std::weak_ptr<ServiceConnection>(newConnection)] { return connection.lock(); });
  // Spares the connection work on requests that the gate will refuse.
  newConnection->setPeerTreatment(CorvelEntitlementDecorator::isEntitled(*newConnection)
                                      ? PeerTreatment::served
                                      : PeerTreatment::refused);
  newConnection->setExportedInterface(interface);
  newConnection->setExportedObject(std::make_shared<CorvelDispatcher>(
      gate, [gate] { return gate->admitsClient(); }, listReplies));
  newConnection->resume();
  return true;
}

ServiceInterface DonationListenerDelegate::makeConfiguredInterface() {
  ServiceInterface interface = makeCorvelInterface();
  configureDonate(interface);
  return interface;
}

void DonationListenerDelegate::configureDonate(ServiceInterface& interface) {
  auto inList = interface.classesForSelector(CorvelSelector::donate, 0, OfReply::no);
  inList.insert(DonationWire::className);
  interface.setClasses(std::move(inList), CorvelSelector::donate, 0, OfReply::no);

  auto accounts = interface.classesForSelector(CorvelSelector::changeAccount, 0, OfReply::no);
  accounts.insert(AccountWire::className);
  interface.setClasses(accounts, CorvelSelector::changeAccount, 0, OfReply::no);
  interface.setClasses(std::move(accounts), CorvelSelector::changeAccount, 1, OfReply::no);
}

}  // namespace quenlet
