#include "tools/owner/WaitingAgent.h"

#include <tuple>
#include <utility>

#include "client/waitForReply.h"
#include "platform/ipc/ServiceLimits.h"
#include "protocol/DonationWire.h"

namespace quenlet {
namespace {

// A part ends with the value that takes it past this size. The largest value, an image, still fits
// in the other half of a message.
constexpr std::size_t partSizeInBytes = ServiceLimits().messageSizeInBytes / 2;

// The part that begins at `place`, which moves behind it.
DonationValues nextPart(const DonationValues& values, std::size_t& place) {
  DonationValues part;
  for (std::size_t bytes = 0; place < values.size() && bytes < partSizeInBytes; ++place) {
    WireEncoder encoder;
    DonationWire::encodeValue(encoder, *values[place]);
    bytes += encoder.bytes().size();
    part.push_back(values[place]);
  }
  return part;
}

ErrorPtr failureOf(bool success, const ErrorPtr& error) {
  if (success || error) return error;
  return makeError(GeneralErrorDomain, 0, "the agent gave no reason");
}

}  // namespace

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

ErrorPtr WaitingAgent::donateInParts(const DonationValues& values) const {
  for (std::size_t place = 0; place < values.size();) {
    const std::size_t inPlace = place;
    ErrorPtr error = donate(nextPart(values, place));
    if (!error) continue;
    if (inPlace == 0) return error;
    return makeError(error->domain(), error->code(),
                     std::to_string(inPlace) + " of " + std::to_string(values.size()) +
                         " donations are in place, then it failed: " + error->debugDescription());
  }
  return nullptr;
}

ErrorPtr WaitingAgent::changeAccount(const AccountPtr& from, const AccountPtr& to) const {
  const auto [error] = waitForReply<ErrorPtr>(
      [&](ErrorReply reply) { agent.changeFromAccount(from, to, std::move(reply)); });
  return error;
}

ErrorPtr WaitingAgent::remove(const std::vector<std::string>& donationIdentifiers) const {
  if (donationIdentifiers.empty()) return nullptr;
  const auto [success, error] = waitForReply<bool, ErrorPtr>([&](SuccessReply reply) {
    agent.removeDonatedMeCardValuesForIdentifiers(donationIdentifiers, std::move(reply));
  });
  return failureOf(success, error);
}

ErrorPtr WaitingAgent::removeAllOf(const std::string& bundleIdentifier) const {
  const auto [success, error] = waitForReply<bool, ErrorPtr>([&](SuccessReply reply) {
    agent.removeDonatedMeCardValuesWithBundleIdentifier(bundleIdentifier, std::move(reply));
  });
  return failureOf(success, error);
}

}  // namespace quenlet
