#pragma once

#include <functional>
#include <memory>

#include "core/CorvelDispatcher.h"
#include "platform/AgentEnvironmentProtocol.h"
#include "platform/ipc/ServiceListener.h"
#include "protocol/CorvelProtocol.h"
#include "storage/BundleLimit.h"

namespace quenlet {

// Accepts every connection to the agent's service and exports the agent on it, behind an
// entitlement gate of the connection's own. Immutable; called on the listener's thread.
class DonationListenerDelegate final : public ServiceListenerDelegate {
 public:
  // Makes the agent for a client that may change the donations of some bundles only.
  using LimitedAgent = std::function<std::shared_ptr<CorvelProtocol>(BundleLimit)>;

  // The gates log to the logger of `environment`. They pass admitted clients on to `agent`, or to
  // what `limitedAgent` makes for a client whose entitlements name bundles.
  DonationListenerDelegate(std::shared_ptr<AgentEnvironmentProtocol> environment,
                           std::shared_ptr<CorvelProtocol> agent, LimitedAgent limitedAgent);

  bool shouldAcceptNewConnection(ServiceListener& listener,
                                 const std::shared_ptr<ServiceConnection>& newConnection) override;

  // The interface of CorvelProtocol with all classes that clients may send.
  [[nodiscard]] static ServiceInterface makeConfiguredInterface();
  // Adds these classes to an interface of CorvelProtocol: donations within the donated list,
  // accounts in an account change.
  static void configureDonate(ServiceInterface& interface);

 private:
  const std::shared_ptr<AgentEnvironmentProtocol> environment;
  const std::shared_ptr<CorvelProtocol> agent;
  const LimitedAgent limitedAgent;
  const ServiceInterface interface = makeConfiguredInterface();
  const std::shared_ptr<DonationListReplies> listReplies = std::make_shared<DonationListReplies>();
};

}  // namespace quenlet
