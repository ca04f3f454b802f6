#pragma once

#include <memory>

#include "core/Corvel.h"
#include "storage/BundleLimit.h"

namespace quenlet {

// Serves a client that may change the donations of some bundles only. Donations and removals under
// other bundles are refused here, before the agent sees them. A change that would replace or remove
// a value held under another bundle is refused by the agent, in the block that would have made it.
// Either way, nothing of the request is done.
//
// Rejections are always refused, since they drop matching values of every donor. Account
// changes pass if the agent's own bundle for accounts is allowed. Reads pass. Immutable.
class BundleLimitDecorator final : public CorvelProtocol {
 public:
  BundleLimitDecorator(std::shared_ptr<Corvel> agent, BundleLimit limit);

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
  const std::shared_ptr<Corvel> agent;
  const std::shared_ptr<const BundleLimit> limit;
};

}  // namespace quenlet
