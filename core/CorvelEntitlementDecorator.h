#pragma once

#include <functional>
#include <memory>
#include <optional>

#include "platform/AgentEnvironmentProtocol.h"
#include "platform/foundation/Mutex.h"
#include "platform/ipc/ServiceListener.h"
#include "protocol/CorvelProtocol.h"

namespace quenlet {

// Lets a client's calls through to the agent only if the client holds the entitlement
// "ovaro.private.contacts" or "ovaro.private.suggestions.contacts". Any other client is answered at
// once, always with the same error. The first call makes the check, while concurrent calls wait for
// it; its result holds for the decorator's life. Each connection has its own decorator, so no
// client gets another's answer. Thread-safe.
class CorvelEntitlementDecorator final : public CorvelProtocol {
 public:
  // Gives the connection of the call that is served, or null. Must not call the decorator.
  using ConnectionProvider = std::function<std::shared_ptr<ServiceConnection>()>;

  CorvelEntitlementDecorator(AgentEnvironmentProtocol& environment,
                             std::shared_ptr<CorvelProtocol> agent,
                             ConnectionProvider connectionProvider);

  // Whether the peer holds one of the two entitlements; used by the check and before any call.
  [[nodiscard]] static bool isEntitled(const ServiceConnection& connection);

  // Whether calls reach the agent; makes the check if it has not been made.
  [[nodiscard]] bool admitsClient() { return denial() == nullptr; }

  void donateMeCardValues(DonationValues values, ErrorReply completionHandler) override;
  void removeDonatedMeCardValuesForIdentifiers(std::vector<std::string> identifiers,
                                               SuccessReply completionHandler) override;
  void removeDonatedMeCardValuesWithBundleIdentifier(std::string bundleIdentifier,
                                                     SuccessReply completionHandler) override;
  void fetchDonatedMeCard(ContactReply reply) override;
  void synchronousDonatedMeCard(EitherContactReply reply) override;
  void meCardDonations(DonationsReply reply) override;
  void changeFromAccount(AccountPtr oldAccount, AccountPtr toAccount,
                         ErrorReply completionHandler) override;
  void rejectValueWithDonationIdentifier(std::string donationIdentifier,
                                         ErrorReply completionHandler) override;
  void rejectValuesWithClusterIdentifier(std::string clusterIdentifier,
                                         ErrorReply completionHandler) override;
  void removeAllRejectionsWithCompletionHandler(ErrorReply completionHandler) override;

 private:
  // Null when the client may pass, else the missing-entitlement error.
  [[nodiscard]] ErrorPtr denial() EXCLUDES(mutex);
  [[nodiscard]] bool checkEntitlements() const;
  // Publishes the answer. Without one, since the check failed, the next call checks again.
  ErrorPtr endCheck(std::optional<bool> answer, ErrorPtr error) EXCLUDES(mutex);

  const std::shared_ptr<CorvelProtocol> agent;
  const std::shared_ptr<AgentLogger> logger;
  const ConnectionProvider connectionProvider;

  Mutex mutex;
  ConditionVariable checkEnded;
  bool checking GUARDED_BY(mutex) = false;
  std::optional<bool> connectionHasEntitlement GUARDED_BY(mutex);
  ErrorPtr entitlementError GUARDED_BY(mutex);
};

}  // namespace quenlet
