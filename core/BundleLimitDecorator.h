#pragma once

#include <memory>

#include "core/BundleLimit.h"
#include "core/Corvel.h"

namespace quenlet {

// The agent for a client who may change the donations of some bundles only. Donations and removals
// under other bundles are refused before the agent sees them; those that would replace or remove
// what is held under another bundle are refused by the agent, in the block that would have made the
// change. Either way nothing of the request is done.
//
// Rejections drop whatever is alike, whoever donated it: they are refused. Changes of accounts are
// let through when the agent's own bundle for accounts is allowed. What only reads is let through.
// Immutable.
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
