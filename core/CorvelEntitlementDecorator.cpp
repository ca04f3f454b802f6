#include "core/CorvelEntitlementDecorator.h"

#include "protocol/ClientEntitlements.h"

namespace quenlet {

CorvelEntitlementDecorator::CorvelEntitlementDecorator(AgentEnvironmentProtocol& environment,
                                                       std::shared_ptr<CorvelProtocol> gatedAgent,
                                                       ConnectionProvider provider)
    : agent(std::move(gatedAgent)),
      logger(environment.logger()),
      connectionProvider(std::move(provider)) {}

bool CorvelEntitlementDecorator::isEntitled(const ServiceConnection& connection) {
  return grants(connection.valueForEntitlement(ContactsEntitlement)) ||
         grants(connection.valueForEntitlement(SuggestionsEntitlement));
}

bool CorvelEntitlementDecorator::checkEntitlements() const {
  const std::shared_ptr<ServiceConnection> connection = connectionProvider();
  if (!connection) return false;
  if (isEntitled(*connection)) return true;
  logger->denyingRequestFromProcess(connection->processIdentifier());
  if (const auto executable = connection->executable()) {
    logger->deniedProcess(connection->processIdentifier(), executable->native());
  }
  return false;
}

ErrorPtr CorvelEntitlementDecorator::denial() {
  {
    MutexLock lock(mutex);
    // One check at a time: a denial is logged once, however many calls there are.
    while (checking) checkEnded.wait(mutex);
    if (connectionHasEntitlement) return entitlementError;
    checking = true;
  }
  // The check calls out, so it runs without the lock.
  try {
    const bool entitled = checkEntitlements();
    return endCheck(entitled, entitled ? nullptr
                                       : makeError(GeneralErrorDomain, MissingEntitlementCode,
                                                   "connection to corvel: missing entitlement"));
  } catch (...) {
    static_cast<void>(endCheck(std::nullopt, nullptr));
    throw;
  }
}

ErrorPtr CorvelEntitlementDecorator::endCheck(std::optional<bool> answer, ErrorPtr error) {
  MutexLock lock(mutex);
  checking = false;
  connectionHasEntitlement = answer;
  entitlementError = std::move(error);
  checkEnded.notifyAll();
  return entitlementError;
}

void CorvelEntitlementDecorator::donateMeCardValues(DonationValues values,
                                                    ErrorReply completionHandler) {
  if (const ErrorPtr error = denial()) {
    completionHandler(error);
  } else {
    agent->donateMeCardValues(std::move(values), std::move(completionHandler));
  }
}

void CorvelEntitlementDecorator::removeDonatedMeCardValuesForIdentifiers(
    std::vector<std::string> identifiers, SuccessReply completionHandler) {
  if (const ErrorPtr error = denial()) {
    completionHandler(false, error);
  } else {
    agent->removeDonatedMeCardValuesForIdentifiers(std::move(identifiers),
                                                   std::move(completionHandler));
  }
}

void CorvelEntitlementDecorator::removeDonatedMeCardValuesWithBundleIdentifier(
    std::string bundleIdentifier, SuccessReply completionHandler) {
  if (const ErrorPtr error = denial()) {
    completionHandler(false, error);
  } else {
    agent->removeDonatedMeCardValuesWithBundleIdentifier(std::move(bundleIdentifier),
                                                         std::move(completionHandler));
  }
}

void CorvelEntitlementDecorator::fetchDonatedMeCard(ContactReply reply) {
  if (const ErrorPtr error = denial()) {
    reply(nullptr, error);
  } else {
    agent->fetchDonatedMeCard(std::move(reply));
  }
}

void CorvelEntitlementDecorator::synchronousDonatedMeCard(EitherContactReply reply) {
  if (const ErrorPtr error = denial()) {
    reply(Result<ContactPtr>::failure(error));
  } else {
    agent->synchronousDonatedMeCard(std::move(reply));
  }
}

void CorvelEntitlementDecorator::meCardDonations(DonationsReply reply) {
  if (const ErrorPtr error = denial()) {
    reply(nullptr, error);
  } else {
    agent->meCardDonations(std::move(reply));
  }
}

void CorvelEntitlementDecorator::changeFromAccount(AccountPtr oldAccount, AccountPtr toAccount,
                                                   ErrorReply completionHandler) {
  if (const ErrorPtr error = denial()) {
    completionHandler(error);
  } else {
    agent->changeFromAccount(std::move(oldAccount), std::move(toAccount),
                             std::move(completionHandler));
  }
}

void CorvelEntitlementDecorator::rejectValueWithDonationIdentifier(std::string donationIdentifier,
                                                                   ErrorReply completionHandler) {
  if (const ErrorPtr error = denial()) {
    completionHandler(error);
  } else {
    agent->rejectValueWithDonationIdentifier(std::move(donationIdentifier),
                                             std::move(completionHandler));
  }
}

void CorvelEntitlementDecorator::rejectValuesWithClusterIdentifier(std::string clusterIdentifier,
                                                                   ErrorReply completionHandler) {
  if (const ErrorPtr error = denial()) {
    completionHandler(error);
  } else {
    agent->rejectValuesWithClusterIdentifier(std::move(clusterIdentifier),
                                             std::move(completionHandler));
  }
}

void CorvelEntitlementDecorator::removeAllRejectionsWithCompletionHandler(
    ErrorReply completionHandler) {
  if (const ErrorPtr error = denial()) {
    completionHandler(error);
  } else {
    agent->removeAllRejectionsWithCompletionHandler(std::move(completionHandler));
  }
}

}  // namespace quenlet
