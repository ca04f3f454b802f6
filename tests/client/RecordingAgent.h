#pragma once

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "platform/donations/CorvelProtocol.h"
#include "platform/foundation/Mutex.h"

namespace quenlet {

// An agent that notes the operations with their arguments and replies at once: with `error` when
// there is one, else with success, `contact` and `value`. It keeps the handlers of donations to
// itself when it holds replies. Thread-safe but for its settings.
class RecordingAgent final : public CorvelProtocol {
 public:
  const DonationValuePtr value = DonationValue::donationValueWithEmailAddress(
      "ann@example.org", "home", DonationOrigin{"bundle", "id", "cluster", Date(1.5), Date(2.5)});
  const ContactPtr contact = [this] {
    ContactFields fields;
    fields.givenName = "Ann";
    fields.emailAddresses = {value->emailEntry()};
    return std::make_shared<const Contact>(std::move(fields));
  }();
  const AccountPtr account = std::make_shared<const Account>(Account{.identifier = "new"});
  ErrorPtr error;
  bool holdsReplies = false;

  std::vector<std::string> takeCalls() {
    MutexLock lock(mutex);
    return std::exchange(calls, {});
  }
  void waitForHeldReply() {
    MutexLock lock(mutex);
    while (held.empty()) changed.wait(mutex);
  }

  void donateMeCardValues(DonationValues values, ErrorReply completionHandler) override {
    note("donate " + std::to_string(values.size()));
    if (!holdsReplies) return completionHandler(error);
    MutexLock lock(mutex);
    held.push_back(std::move(completionHandler));
    changed.notifyAll();
  }
  void removeDonatedMeCardValuesForIdentifiers(std::vector<std::string> identifiers,
                                               SuccessReply completionHandler) override {
    std::string all = "removeIdentifiers";
    for (const std::string& identifier : identifiers) all += " " + identifier;
    note(all);
    completionHandler(!error, error);
  }
  void removeDonatedMeCardValuesWithBundleIdentifier(std::string bundleIdentifier,
                                                     SuccessReply completionHandler) override {
    note("removeBundle " + bundleIdentifier);
    completionHandler(!error, error);
  }
  void fetchDonatedMeCard(ContactReply reply) override {
    note("fetch");
    reply(error ? nullptr : contact, error);
  }
  void synchronousDonatedMeCard(EitherContactReply reply) override {
    note("synchronous");
    reply(error ? Result<ContactPtr>::right(error) : Result<ContactPtr>::left(contact));
  }
  void meCardDonations(DonationsReply reply) override {
    note("list");
    reply(error ? nullptr : std::make_shared<const DonationValues>(1, value), error);
  }
  void changeFromAccount(AccountPtr oldAccount, AccountPtr toAccount,
                         ErrorReply completionHandler) override {
    const auto name = [](const AccountPtr& named) { return named ? named->identifier : "-"; };
    note("account " + name(oldAccount) + " " + name(toAccount));
    completionHandler(error);
  }
  void rejectValueWithDonationIdentifier(std::string donationIdentifier,
                                         ErrorReply completionHandler) override {
    note("reject " + donationIdentifier);
    completionHandler(error);
  }
  void rejectValuesWithClusterIdentifier(std::string clusterIdentifier,
                                         ErrorReply completionHandler) override {
    note("rejectCluster " + clusterIdentifier);
    completionHandler(error);
  }
  void removeAllRejectionsWithCompletionHandler(ErrorReply completionHandler) override {
    note("clear");
    completionHandler(error);
  }

 private:
  void note(std::string call) {
    MutexLock lock(mutex);
    calls.push_back(std::move(call));
  }

  Mutex mutex;
  ConditionVariable changed;
  std::vector<std::string> calls GUARDED_BY(mutex);
  std::vector<ErrorReply> held GUARDED_BY(mutex);
};

}  // namespace quenlet
