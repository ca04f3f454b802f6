#include "quenlet/Client.h"

#include <utility>

#include "client/Conversion.h"
#include "client/CorvelProxy.h"
#include "client/waitForReply.h"
#include "platform/ipc/ServiceInterface.h"

namespace quenlet {
namespace {

using Donations = Result<std::vector<Donation>>;

Donations donationsOf(const std::shared_ptr<const DonationValues>& values, const ErrorPtr& error) {
  if (!values) return Donations::failure(error);
  return Donations::success(Conversion::donations(*values));
}

// A success or an error; the wire allows neither.
SuccessReply successReply(Client::ErrorHandler handler) {
  return [handler = std::move(handler)](bool success, ErrorPtr error) {
    if (!success && !error) {
      error = makeServiceError(ServiceErrorCode::malformedMessage,
                               "the agent reported neither success nor an error");
    }
    handler(std::move(error));
  };
}

// Waits for an operation with a handler that gets an error or null.
template <typename Operation>
ErrorPtr errorOf(Operation operation) {
  return std::get<0>(waitForReply<ErrorPtr>(std::move(operation)));
}

}  // namespace

class Client::Implementation final {
 public:
  explicit Implementation(std::chrono::milliseconds timeLimit) : agent(timeLimit) {}
  CorvelProxy agent;
};

Client::Client(std::chrono::milliseconds timeLimit)
    : implementation(std::make_unique<Implementation>(timeLimit)) {}

Client::~Client() = default;

Result<Card> Client::card() {
  std::optional<Result<Card>> card;
  implementation->agent.synchronousDonatedMeCard([&card](const Result<ContactPtr>& contact) {
    card = contact.ok() ? Result<Card>::success(Conversion::card(*contact.value()))
                        : Result<Card>::failure(contact.error());
  });
  return *std::move(card);
}

void Client::card(CardHandler handler) {
  implementation->agent.fetchDonatedMeCard(
      [handler = std::move(handler)](const ContactPtr& contact, const ErrorPtr& error) {
        handler(contact ? Result<Card>::success(Conversion::card(*contact))
                        : Result<Card>::failure(error));
      });
}

// Converts on the waiting thread, so that handlers need not wait for it.
Result<std::vector<Donation>> Client::donations() {
  const auto [values, error] = waitForReply<std::shared_ptr<const DonationValues>, ErrorPtr>(
      [this](DonationsReply reply) { implementation->agent.meCardDonations(std::move(reply)); });
  return donationsOf(values, error);
}

void Client::donations(DonationsHandler handler) {
  implementation->agent.meCardDonations(
      [handler = std::move(handler)](const auto& values, const ErrorPtr& error) {
        handler(donationsOf(values, error));
      });
}

ErrorPtr Client::donate(std::vector<Donation> values) {
  return errorOf([&](ErrorHandler handler) { donate(std::move(values), std::move(handler)); });
}

void Client::donate(std::vector<Donation> values, ErrorHandler handler) {
  Result<DonationValues> converted = Conversion::donationValues(std::move(values));
  if (!converted.ok()) return handler(converted.error());
  implementation->agent.donateMeCardValues(std::move(converted).takeValue(), std::move(handler));
}

ErrorPtr Client::remove(std::vector<std::string> donationIdentifiers) {
  return errorOf(
      [&](ErrorHandler handler) { remove(std::move(donationIdentifiers), std::move(handler)); });
}

void Client::remove(std::vector<std::string> donationIdentifiers, ErrorHandler handler) {
  implementation->agent.removeDonatedMeCardValuesForIdentifiers(std::move(donationIdentifiers),
                                                                successReply(std::move(handler)));
}

ErrorPtr Client::removeBundle(std::string bundleIdentifier) {
  return errorOf(
      [&](ErrorHandler handler) { removeBundle(std::move(bundleIdentifier), std::move(handler)); });
}

void Client::removeBundle(std::string bundleIdentifier, ErrorHandler handler) {
  implementation->agent.removeDonatedMeCardValuesWithBundleIdentifier(
      std::move(bundleIdentifier), successReply(std::move(handler)));
}

ErrorPtr Client::changeAccount(std::optional<AccountRecord> before,
                               std::optional<AccountRecord> after) {
  return errorOf([&](ErrorHandler handler) {
    changeAccount(std::move(before), std::move(after), std::move(handler));
  });
}

void Client::changeAccount(std::optional<AccountRecord> before, std::optional<AccountRecord> after,
                           ErrorHandler handler) {
  const Result<AccountPtr> oldAccount = Conversion::account(std::move(before));
  if (!oldAccount.ok()) return handler(oldAccount.error());
  const Result<AccountPtr> newAccount = Conversion::account(std::move(after));
  if (!newAccount.ok()) return handler(newAccount.error());
  implementation->agent.changeFromAccount(oldAccount.value(), newAccount.value(),
                                          std::move(handler));
}

ErrorPtr Client::reject(std::string donationIdentifier) {
  return errorOf(
      [&](ErrorHandler handler) { reject(std::move(donationIdentifier), std::move(handler)); });
}

void Client::reject(std::string donationIdentifier, ErrorHandler handler) {
  implementation->agent.rejectValueWithDonationIdentifier(std::move(donationIdentifier),
                                                          std::move(handler));
}

ErrorPtr Client::rejectCluster(std::string clusterIdentifier) {
  return errorOf([&](ErrorHandler handler) {
    rejectCluster(std::move(clusterIdentifier), std::move(handler));
  });
}

void Client::rejectCluster(std::string clusterIdentifier, ErrorHandler handler) {
  implementation->agent.rejectValuesWithClusterIdentifier(std::move(clusterIdentifier),
                                                          std::move(handler));
}

ErrorPtr Client::removeAllRejections() {
  return errorOf([this](ErrorHandler handler) { removeAllRejections(std::move(handler)); });
}

void Client::removeAllRejections(ErrorHandler handler) {
  implementation->agent.removeAllRejectionsWithCompletionHandler(std::move(handler));
}

}  // namespace quenlet
