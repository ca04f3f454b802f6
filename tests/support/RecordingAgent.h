#pragma once

#include <gtest/gtest.h>

#include "platform/donations/CorvelProtocol.h"
#include "platform/foundation/Mutex.h"
#include "tests/support/DonationFactory.h"

namespace quenlet {

// An agent that notes the operations with their arguments and replies at once: with `error` when
// there is one, else with success, `contact` and `value`. It keeps the handlers of donations and
// of a fetch to itself when it holds replies. Thread-safe but for its settings.
class RecordingAgent final : public CorvelProtocol {
 public:
  const DonationValuePtr value =
      email("ann@example.org",
            DonationOrigin{"bundle", "id", "cluster", Date(1.5), Date(40 * 86400 + 2.5)});
  ContactPtr contact = [this] {
    ContactFields fields;
    fields.givenName = "Ann";
    fields.emailAddresses = {value->emailEntry()};
    return std::make_shared<const Contact>(std::move(fields));
  }();
  const AccountPtr account = std::make_shared<const Account>(Account{.identifier = "new"});
  ErrorPtr error;
  bool holdsReplies = false;

  // What was noted since the last call: "reject id;clear;".
  std::string takeCalls() {
    MutexLock lock(mutex);
    return std::exchange(calls, {});
  }
  void waitForHeldReply() {
    MutexLock lock(mutex);
    while (held.empty()) changed.wait(mutex);
  }

  // Answers the fetch whose reply it has held, and keeps the handler, as an agent may.
  void answerHeldFetch() { heldFetch(error ? nullptr : contact, error); }

  // Calls all ten operations of `way`, which leads to this agent, and tells `replied` of each reply
  // by the operation's place in the protocol.
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
      outcome.isLeft() ? reply(outcome.left(), nullptr) : reply(ContactPtr(), outcome.right());
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
    note("donate " + std::to_string(values.size()));
    if (!holdsReplies) return reply(error);
    MutexLock lock(mutex);
    held.push_back(std::move(reply));
    changed.notifyAll();
  }
  void removeDonatedMeCardValuesForIdentifiers(std::vector<std::string> identifiers,
                                               SuccessReply reply) override {
    std::string all = "removeIdentifiers";
    for (const std::string& identifier : identifiers) all += " " + identifier;
    answer(all, reply, !error);
  }
  void removeDonatedMeCardValuesWithBundleIdentifier(std::string bundle,
                                                     SuccessReply reply) override {
    answer("removeBundle " + bundle, reply, !error);
  }
  void fetchDonatedMeCard(ContactReply reply) override {
    note("fetch");
    if (!holdsReplies) return reply(error ? nullptr : contact, error);
    MutexLock lock(mutex);
    heldFetch = std::move(reply);
  }
  void synchronousDonatedMeCard(EitherContactReply reply) override {
    note("synchronous");
    reply(error ? Result<ContactPtr>::right(error) : Result<ContactPtr>::left(contact));
  }
  void meCardDonations(DonationsReply reply) override {
    answer("list", reply, error ? nullptr : std::make_shared<const DonationValues>(1, value));
  }
  void changeFromAccount(AccountPtr from, AccountPtr to, ErrorReply reply) override {
    const auto name = [](const AccountPtr& named) { return named ? named->identifier : "-"; };
    answer("account " + name(from) + " " + name(to), reply);
  }
  void rejectValueWithDonationIdentifier(std::string identifier, ErrorReply reply) override {
    answer("reject " + identifier, reply);
  }
  void rejectValuesWithClusterIdentifier(std::string identifier, ErrorReply reply) override {
    answer("rejectCluster " + identifier, reply);
  }
  void removeAllRejectionsWithCompletionHandler(ErrorReply reply) override {
    answer("clear", reply);
  }

 private:
  void note(const std::string& call) {
    MutexLock lock(mutex);
    calls += call + ";";
  }
  template <typename Reply, typename... Results>
  void answer(const std::string& call, const Reply& reply, const Results&... results) {
    note(call);
    reply(results..., error);
  }

  Mutex mutex;
  ConditionVariable changed;
  std::string calls GUARDED_BY(mutex);
  std::vector<ErrorReply> held GUARDED_BY(mutex);
  ContactReply heldFetch;
};

}  // namespace quenlet
