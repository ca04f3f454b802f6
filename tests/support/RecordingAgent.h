#pragma once

#include <gtest/gtest.h>

#include "mecard/DonatedEntries.h"
#include "protocol/CorvelProtocol.h"
#include "tests/support/DonationFactory.h"

namespace quenlet {

// An agent that notes the operations with their arguments and replies at once: with the error it
// was told to give, else with success, `contact` and `value`. It keeps the handlers of donations
// and of a fetch to itself when it holds replies. Thread-safe, except for changes of `contact`.
class RecordingAgent : public CorvelProtocol {
 public:
  const DonationValuePtr value =
      email("ann@example.org", from("bundle", "id", "cluster", Date(40 * 86400 + 2.5)));
  ContactPtr contact = [this] {
    ContactFields fields;
    fields.givenName = "Ann";
    fields.emailAddresses = {entryOf<std::string>(*value)};
    return std::make_shared<const Contact>(std::move(fields));
  }();
  const AccountPtr account = std::make_shared<const Account>(Account{.identifier = "new"});
  std::atomic<bool> holdsReplies = false;

  void setError(ErrorPtr newError) {
    MutexLock lock(mutex);
    error = std::move(newError);
  }

  // What was noted since the last call: "reject id;clear;".
  std::string takeCalls() {
    MutexLock lock(mutex);
    return std::exchange(calls, {});
  }
  // What answers the first request whose reply is held; the handler is kept, as an agent may.
  std::function<void()> waitForHeldReply() {
    MutexLock lock(mutex);
    while (held.empty()) changed.wait(mutex);
    return held.front();
  }

  // Calls all ten operations of `way`, which leads here, and tells `replied` of each by its place.
  void callAll(CorvelProtocol& way, const std::function<void(int, ErrorPtr)>& replied) const {
    const auto plain = [&](int place) {
      return [=](const ErrorPtr& failure) { replied(place, failure); };
    };
    const auto checked = [&](int place) {
      return [=](const auto& result, const ErrorPtr& failure) {
        EXPECT_EQ(!!result, !failure) << place;
        replied(place, failure);
      };
    };
    way.donateMeCardValues({value}, plain(1));
    way.removeDonatedMeCardValuesForIdentifiers({"id1", "id2"}, checked(2));
    way.removeDonatedMeCardValuesWithBundleIdentifier("bundle", checked(3));
    way.fetchDonatedMeCard(checked(4));
    way.synchronousDonatedMeCard([reply = checked(5)](const Result<ContactPtr>& outcome) {
      outcome.ok() ? reply(outcome.value(), nullptr) : reply(ContactPtr(), outcome.error());
    });
    way.meCardDonations(checked(6));
    way.changeFromAccount(nullptr, account, plain(7));
    way.rejectValueWithDonationIdentifier("id", plain(8));
    way.rejectValuesWithClusterIdentifier("cluster", plain(9));
    way.removeAllRejectionsWithCompletionHandler(plain(10));
  }
  static constexpr char allCalls[] =
      "donate 1;removeIdentifiers id1 id2;removeBundle bundle;fetch;synchronous;list;"
      "account - new;reject id;rejectCluster cluster;clear;";

  void donateMeCardValues(DonationValues values, ErrorReply reply) override {
    const ErrorPtr failure = note("donate " + std::to_string(values.size()));
    answerOrHold([reply, failure] { reply(failure); });
  }
  void removeDonatedMeCardValuesForIdentifiers(std::vector<std::string> identifiers,
                                               SuccessReply reply) override {
    std::string all = "removeIdentifiers";
    for (const std::string& identifier : identifiers) all += " " + identifier;
    succeed(all, reply);
  }
  void removeDonatedMeCardValuesWithBundleIdentifier(std::string id, SuccessReply reply) override {
    succeed("removeBundle " + id, reply);
  }
  void fetchDonatedMeCard(ContactReply reply) override {
    const ErrorPtr failure = note("fetch");
    answerOrHold([this, reply, failure] { reply(failure ? nullptr : contact, failure); });
  }
  void synchronousDonatedMeCard(EitherContactReply reply) override {
    const ErrorPtr failure = note("synchronous");
    reply(failure ? Result<ContactPtr>::failure(failure) : Result<ContactPtr>::success(contact));
  }
  void meCardDonations(DonationsReply reply) override {
    const ErrorPtr failure = note("list");
    reply(failure ? nullptr : listOf({value}), failure);
  }
  void changeFromAccount(AccountPtr from, AccountPtr to, ErrorReply reply) override {
    const auto name = [](const AccountPtr& named) { return named ? named->identifier : "-"; };
    reply(note("account " + name(from) + " " + name(to)));
  }
  void rejectValueWithDonationIdentifier(std::string identifier, ErrorReply reply) override {
    reply(note("reject " + identifier));
  }
  void rejectValuesWithClusterIdentifier(std::string identifier, ErrorReply reply) override {
    reply(note("rejectCluster " + identifier));
  }
  void removeAllRejectionsWithCompletionHandler(ErrorReply reply) override { reply(note("clear")); }

 private:
  // Gives the error to reply with.
  ErrorPtr note(const std::string& call) {
    MutexLock lock(mutex);
    calls += call + ";";
    return error;
  }
  void answerOrHold(std::function<void()> answer) {
    if (!holdsReplies) return answer();
    MutexLock lock(mutex);
    held.push_back(std::move(answer));
    changed.notifyAll();
  }
  void succeed(const std::string& call, const SuccessReply& reply) {
    const ErrorPtr failure = note(call);
    reply(!failure, failure);
  }

  Mutex mutex;
  ConditionVariable changed;
  std::string calls GUARDED_BY(mutex);
  ErrorPtr error GUARDED_BY(mutex);
  std::vector<std::function<void()>> held GUARDED_BY(mutex);
};

}  // namespace quenlet
