#include "tools/owner/WaitingAgent.h"

#include <tuple>
#include <utility>

#include "client/waitForReply.h"

namespace quenlet {

using Donations = std::shared_ptr<const DonationValues>;

Result<Donations> WaitingAgent::donations() const {
  const auto [values, error] = waitForReply<Donations, ErrorPtr>(
      [this](DonationsReply reply) { agent.meCardDonations(std::move(reply)); });
  return error ? Result<Donations>::failure(error) : Result<Donations>::success(values);
}

ErrorPtr WaitingAgent::donate(const DonationValues& values) const {
  if (values.empty()) return nullptr;
  const auto [error] = waitForReply<ErrorPtr>(
      [&](ErrorReply reply) { agent.donateMeCardValues(values, std::move(reply)); });
  return error;
}

ErrorPtr WaitingAgent::remove(const std::vector<std::string>& donationIdentifiers) const {
  if (donationIdentifiers.empty()) return nullptr;
  const auto [success, error] = waitForReply<bool, ErrorPtr>([&](SuccessReply reply) {
    agent.removeDonatedMeCardValuesForIdentifiers(donationIdentifiers, std::move(reply));
  });
  if (success || error) return error;
  return makeError(GeneralErrorDomain, 0, "the agent gave no reason");
}

}  // namespace quenlet
