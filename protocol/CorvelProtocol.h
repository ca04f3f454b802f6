#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "model/DonationValue.h"
#include "platform/accounts/Account.h"
#include "platform/contacts/Contact.h"
#include "quenlet/Result.h"

namespace quenlet {

using ErrorReply = std::function<void(ErrorPtr error)>;
using SuccessReply = std::function<void(bool success, ErrorPtr error)>;
// The contact or null, the error or null.
using ContactReply = std::function<void(ContactPtr contact, ErrorPtr error)>;
using EitherContactReply = std::function<void(Result<ContactPtr> contactOrError)>;
// The list or null, the error or null.
using DonationsReply =
    std::function<void(std::shared_ptr<const DonationValues> values, ErrorPtr error)>;

// The operations that the agent offers to clients. None throws; each replies exactly once through
// its handler. Implementations say on which thread.
class CorvelProtocol {
 public:
  virtual ~CorvelProtocol() = default;
  virtual void donateMeCardValues(DonationValues values, ErrorReply completionHandler) = 0;
  virtual void removeDonatedMeCardValuesForIdentifiers(std::vector<std::string> identifiers,
                                                       SuccessReply completionHandler) = 0;
  virtual void removeDonatedMeCardValuesWithBundleIdentifier(std::string bundleIdentifier,
                                                             SuccessReply completionHandler) = 0;
  virtual void fetchDonatedMeCard(ContactReply reply) = 0;
  virtual void synchronousDonatedMeCard(EitherContactReply reply) = 0;
  virtual void meCardDonations(DonationsReply reply) = 0;
  virtual void changeFromAccount(AccountPtr oldAccount, AccountPtr toAccount,
                                 ErrorReply completionHandler) = 0;
  virtual void rejectValueWithDonationIdentifier(std::string donationIdentifier,
                                                 ErrorReply completionHandler) = 0;
  virtual void rejectValuesWithClusterIdentifier(std::string clusterIdentifier,
                                                 ErrorReply completionHandler) = 0;
  virtual void removeAllRejectionsWithCompletionHandler(ErrorReply completionHandler) = 0;
};

}  // namespace quenlet
