#include "tests/core/AgentFixture.h"

namespace quenlet {
namespace {

using namespace CorvelSelector;

class CorvelRequestsTest : public AgentFixture {
 protected:
  // What a request leads to, with "will", "did" and "refused" for the events that name it.
  Events eventsFor(const std::string& request, const DonationValues& values) {
    Events events = eventsOf(request, values);
    const std::pair<std::string, const char*> words[] = {{"agentWillHandleRequest: ", "will"},
                                                         {"agentDidHandleRequest: ", "did"},
                                                         {"featureNotEnabled: ", "refused"}};
    for (std::string& event : events) {
      for (const auto& [name, word] : words) {
        if (event.ends_with(name + request))
          event.replace(event.find(name), std::string::npos, word);
      }
    }
    return events;
  }
  Events eventsWithRenewals(const std::string& request, const DonationValues& values) {
    Events events = eventsFor(request, values);
    runRenewals();
    const Events later = takeTrace();
    events.insert(events.end(), later.begin(), later.end());
    return events;
  }
  // `first`, then as many attempts to renew a value with a donor that is not there.
  static Events thenRenewals(Events first, const std::string& identifier,
                             const std::string& bundleIdentifier, int count = 1) {
    while (count-- > 0) {
      first.push_back("background: make loader");
      first.push_back("background: willRenewValues:withDonor: [" + identifier + "]," +
                      bundleIdentifier);
      first.push_back("background: load " + bundleIdentifier);
      first.push_back("background: couldNotRenewBecauseLoadingError: donors 404");
    }
    return first;
  }
  DonationValuePtr expired(const char* identifier) const {
    return email("b@x", from("other", identifier, std::nullopt,
                             environment->schedulers.now().addingSeconds(-1)));
  }
};

TEST_F(CorvelRequestsTest, RefusesWhileTheFeatureIsOff) {
  // The request, whether it is served while nobody has decided, and what follows its refusal.
  const std::tuple<std::string, bool, Events> rows[] = {
      {donate, true, {"caller: reply error 1"}},
      {removeIdentifiers, true, {"caller: reply false error 1"}},
      {removeBundle, true, {"caller: reply false error 1"}},
      {fetch, false, {"caller: did", "background: reply error 1"}},
      {synchronousFetch, false, {"immediate: reply error 1", "caller: did"}},
      {list, false, {"caller: reply error 1"}},
  };
  for (const bool undetermined : {true, false}) {
    if (!undetermined) setEnabled(false);
    static_cast<void>(takeTrace());
    for (const auto& [request, served, afterRefusal] : rows) {
      Events expected = {"caller: will", "caller: refused"};
      expected.insert(expected.end(), afterRefusal.begin(), afterRefusal.end());
      const Events events = eventsFor(request, {email("a@x")});
      if (undetermined && served) {
        EXPECT_EQ(events.back(), "background: did") << request;
      } else {
        EXPECT_EQ(events, expected) << request;
      }
    }
  }
}

TEST_F(CorvelRequestsTest, KeepsTheProcessFromItsEndUntilAChangeIsAnswered) {
  hold({email("a@x", from("app", "a"))});
  const int& open = *environment->openTransactions;
  int openAtReply = 0;
  const ErrorReply reply = [&](const ErrorPtr&) { openAtReply = open; };
  const std::pair<const char*, std::function<void()>> rows[] = {
      {"donation", [&] { agent->donateMeCardValues({email("b@x")}, reply); }},
      {"removal",
       [&] {
         agent->removeDonatedMeCardValuesWithBundleIdentifier(
             "app", [&](bool, const ErrorPtr& error) { reply(error); });
       }},
  };
  for (const auto& [name, change] : rows) {
    change();
    EXPECT_EQ(open, 1) << name;
    run();
    EXPECT_EQ(std::exchange(openAtReply, 0), 1) << name;
    EXPECT_EQ(open, 0) << name;
  }
}

TEST_F(CorvelRequestsTest, ServesEachRequestInOrderAndOnItsSchedulers) {
  const DonationValues a = {email("a@x", from("app", "a"))};
  const DonationValues unknown = {email("c@x", from("none", "c"))};
  const std::string accepting = "caller: acceptingDonations: ";
  const std::string will = "caller: will";
  const std::string did = "background: did";
  const std::string done = "background: reply no error";
  const std::string removed = "background: reply true no error";
  hold({a.front(), email("b@x", from("other", "b"))});
  const std::tuple<std::string, DonationValues, Events> rows[] = {
      {donate, a,
       thenRenewals({will, accepting + "[a]", posted, "io: store a b", done, did}, "a", "app")},
      {donate,
       {expired("b")},
       thenRenewals({will, accepting + "[b]", posted, "io: store a b", done, did,
                     "background: preExpiredDonations: [b]"},
                    "b", "other", 2)},
      {donate, {}, {will, accepting + "[]", done, did}},
      {list, {}, {will, "reader: did", "background: reply list a b"}},
      {fetch, {}, {will, "caller: reply card a@x b@x", "caller: did"}},
      {synchronousFetch, {}, {will, "caller: reply card a@x b@x", "caller: did"}},
      {removeIdentifiers, unknown, {will, posted, "io: store a b", removed, did}},
      {removeIdentifiers, {}, {will, removed, did}},
      {removeBundle, {}, {will, removed, did}},
      {removeBundle, a, {will, posted, "io: store b", removed, did}},
      {fetch, {}, {will, "caller: reply card b@x", "caller: did"}},
  };
  for (const auto& [request, values, expected] : rows) {
    EXPECT_EQ(eventsWithRenewals(request, values), expected) << request;
  }
}

TEST_F(CorvelRequestsTest, KeepsTheChangeWhenItsSaveFails) {
  hold({email("a@x", from("app", "a"))});
  persistence->failure = makeError("disk", 501);
  EXPECT_EQ(eventsWithRenewals(donate, {expired("b")}),
            thenRenewals({"caller: will", "caller: acceptingDonations: [b]", posted,
                          "io: store a b", "background: reply error 501", "background: did",
                          "background: preExpiredDonations: [b]"},
                         "b", "other"));
  EXPECT_EQ(eventsFor(removeIdentifiers, {email("a@x", from("app", "a"))}),
            (Events{"caller: will", posted, "io: store b", "background: reply false error 501",
                    "background: did"}));
  EXPECT_EQ(replyTo(list), "list b");
}

TEST_F(CorvelRequestsTest, HoldsOneValueAnIdentifierAndNoRejectedOne) {
  environment->feedback->rejectedDonations = {"rejected"};
  hold({email("a@x", from("app", "\u00e9")), email("b@x", from("app", "b")),
        email("r@x", from("app", "rejected")), email("c@x", from("other", "e\u0301"))});
  EXPECT_EQ(replyTo(fetch), "card c@x b@x");
  agent->removeDonatedMeCardValuesForIdentifiers({"b", "b", "none"}, [](bool, const ErrorPtr&) {});
  run();
  EXPECT_EQ(replyTo(fetch), "card c@x");
  EXPECT_EQ(identifiersOf(persistence->kept), "e\u0301");
  // The first value, which the identifier was found by, is gone by now.
  static_cast<void>(eventsOf(donate, {email("d@x", from("app", "\u00e9"))}));
  EXPECT_EQ(replyTo(fetch), "card d@x");
}

TEST_F(CorvelRequestsTest, DropsWhatIsKnownToBeRejectedOnlyLater) {
  agent->restorePersistedState();
  hold({email("a@x", from("app", "a")), email("b@x", from("app", "b"))});
  environment->feedback->rejectedDonations = {"a", "other"};
  for (const Events& expected : {Events{posted, "io: store b"}, Events()}) {
    environment->feedback->changeHandler();
    run();
    EXPECT_EQ(takeTrace(), expected);
    EXPECT_EQ(replyTo(fetch), "card b@x");
  }
}

TEST_F(CorvelRequestsTest, RestoresWhatIsStillGood) {
  const auto expiring = [this](const char* address, const char* identifier, double inSeconds) {
    return email(address, from("app", identifier, std::nullopt,
                               environment->schedulers.now().addingSeconds(inSeconds)));
  };
  environment->feedback->rejectedDonations = {"rejected"};
  environment->donors.install("app");
  persistence->kept = {expiring("1@x", "twice", 1e9),   expiring("2@x", "expired", 0),
                       expiring("3@x", "soon", 604799), expiring("4@x", "week", 604800),
                       expiring("5@x", "rejected", 1),  expiring("6@x", "twice", 1e9)};
  agent->restorePersistedState();
  send(donate, {email("7@x", from("app", "new"))});  // waits for the restore
  static_cast<void>(takeTrace());
  run();
  Events events = takeTrace();
  events.resize(2);
  EXPECT_EQ(events,
            (Events{"writer: beginRestorePersistedState", "writer: endRestorePersistedState"}));
  runRenewals();
  events = takeTrace();
  std::erase_if(events, [](const auto& event) { return event.find(": renew") == event.npos; });
  EXPECT_EQ(events, (Events{"background: renew expired", "background: renew soon",
                            "background: renew new"}));
  setEnabled(true);
  EXPECT_EQ(replyTo(list), "list twice soon week new");
  EXPECT_EQ(replyTo(fetch), "card 6@x 3@x 4@x 7@x");

  persistence->failure = makeError("disk", 5);
  agent->restorePersistedState();
  run();
  EXPECT_EQ(takeTrace(), Events{"writer: beginRestorePersistedState"});
  EXPECT_EQ(replyTo(list), "list twice soon week new");
}

}  // namespace
}  // namespace quenlet
