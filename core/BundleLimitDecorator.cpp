#include "core/BundleLimitDecorator.h"

#include <algorithm>

namespace quenlet {

BundleLimitDecorator::BundleLimitDecorator(std::shared_ptr<Corvel> limitedAgent,
                                           BundleLimit clientLimit)
    : agent(std::move(limitedAgent)),
      limit(std::make_shared<const BundleLimit>(std::move(clientLimit))) {}

void BundleLimitDecorator::donateMeCardValues(DonationValues values, ErrorReply completionHandler) {
  const bool allowed =
      std::all_of(values.begin(), values.end(),
                  [this](const DonationValuePtr& value) { return limit->allows(*value); });
  if (!allowed) return completionHandler(BundleLimit::refusal());
  agent->donateMeCardValuesWithin(limit, std::move(values), std::move(completionHandler));
}

void BundleLimitDecorator::removeDonatedMeCardValuesForIdentifiers(
    std::vector<std::string> identifiers, SuccessReply completionHandler) {
  agent->removeDonatedMeCardValuesWithin(limit, std::move(identifiers),
                                         std::move(completionHandler));
}

void BundleLimitDecorator::removeDonatedMeCardValuesWithBundleIdentifier(
    std::string bundleIdentifier, SuccessReply completionHandler) {
  if (!limit->allows(bundleIdentifier)) return completionHandler(false, BundleLimit::refusal());
  agent->removeDonatedMeCardValuesWithBundleIdentifier(std::move(bundleIdentifier),
                                                       std::move(completionHandler));
}

void BundleLimitDecorator::fetchDonatedMeCard(ContactReply reply) {
  agent->fetchDonatedMeCard(std::move(reply));
}

void BundleLimitDecorator::synchronousDonatedMeCard(EitherContactReply reply) {
  agent->synchronousDonatedMeCard(std::move(reply));
}

void BundleLimitDecorator::meCardDonations(DonationsReply reply) {
  agent->meCardDonations(std::move(reply));
}

void BundleLimitDecorator::changeFromAccount(AccountPtr oldAccount, AccountPtr toAccount,
                                             ErrorReply completionHandler) {
  if (!limit->allows(AccountsBundleIdentifier)) return completionHandler(BundleLimit::refusal());
  agent->changeFromAccount(std::move(oldAccount), std::move(toAccount),
                           std::move(completionHandler));
}

void BundleLimitDecorator::rejectValueWithDonationIdentifier(std::string,
                                                             ErrorReply completionHandler) {
  completionHandler(BundleLimit::refusal());
}

void BundleLimitDecorator::rejectValuesWithClusterIdentifier(std::string,
                                                             ErrorReply completionHandler) {
  completionHandler(BundleLimit::refusal());
}

void BundleLimitDecorator::removeAllRejectionsWithCompletionHandler(ErrorReply completionHandler) {
  completionHandler(BundleLimit::refusal());
}

}  // namespace quenlet
