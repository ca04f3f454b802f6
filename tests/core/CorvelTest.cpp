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
        if (event.ends_with(name + request)) event.replace(event.find(name), event.npos, word);
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
  static Events thenRenewals(Events first, const std::string& identifier, const std::string& bundle,
                             int count = 1) {
    while (count-- > 0) {
      first.push_back("background: make loader");
      first.push_back("background: willRenewValues:withDonor: [" + identifier + "]," + bundle);
      first.push_back("background: load " + bundle);
      first.push_back("background: couldNotRenewBecauseLoadingError: donors 404");
    }
    return first;
  }
  DonationValuePtr expiring(const std::string& bundle, const std::string& identifier,
                            double inSeconds, const std::string& address = "b@x") const {
    return email(address, from(bundle, identifier, std::nullopt,
                               environment->schedulers.now().addingSeconds(inSeconds)));
  }
};

TEST_F(CorvelRequestsTest, RefusesWhileTheFeatureIsOffAndSaysWhy) {
  // The request, whether it is served while nobody has decided, and what follows its refusal.
  const std::tuple<std::string, bool, Events> rows[] = {
      {donate, true, {"caller: reply error 1"}},
      {removeIdentifiers, true, {"caller: reply false error 1"}},
      {removeBundle, true, {"caller: reply false error 1"}},
      {fetch, false, {"caller: did", "background: reply error 1"}},
      {synchronousFetch, false, {"immediate: reply error 1", "caller: did"}},
      {list, false, {"caller: reply error 1"}},
  };
  const auto expectRefusals = [&](bool undetermined, const std::string& sentence) {
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
    agent->meCardDonations([&](const auto&, const auto& error) {
      EXPECT_EQ(error->description(), "ovaro.quenlet.donation-error 1: " + sentence);
    });
  };
  expectRefusals(true,
                 "the agent has just started and does not know yet whether donations are enabled");
  setEnabled(false);
  expectRefusals(false, "donations are not enabled");
}

TEST_F(CorvelRequestsTest, KeepsTheProcessFromItsEndUntilAChangeIsAnswered) {
  hold({email("a@x")});
  const int& open = *environment->openTransactions;
  for (const char* change : {donate, removeBundle}) {
    send(change, {email("b@x")});
    EXPECT_EQ(open, 1) << change;
    run();
    EXPECT_EQ(std::exchange(openAtReply, 0), 1) << change;
    EXPECT_EQ(open, 0) << change;
  }
}

TEST_F(CorvelRequestsTest, RefusesWhatWouldMakeTheTableLargerThanAnyFile) {
  const DonationValuePtr a = email("a@x", from("app", "a"));
  const DonationValuePtr b = email("b@x", from("app", "b"));
  const DonationValuePtr c = email("c@x", from("app", "c"));
  hold({a, b});
  persistence->capacity = a->propertyListText()->size() + b->propertyListText()->size();
  EXPECT_EQ(eventsFor(donate, {email("bb@x", from("app", "b"))}),
            (Events{"caller: will", "caller: acceptingDonations: [b]",
                    "background: reply error 501", "background: did"}));
  EXPECT_EQ(replyTo(fetch), "card a@x b@x");
  EXPECT_EQ(replyTo(donate, {b, a}), "no error") << "what is replaced makes room";
  EXPECT_EQ(replyTo(donate, {c}), "error 501");
  eventsOf(removeIdentifiers, {a});
  EXPECT_EQ(replyTo(donate, {c}), "no error");
  EXPECT_EQ(identifiersOf(persistence->kept), "b c");
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
  environment->feedback->rejected = {"rejected"};
  const std::tuple<std::string, DonationValues, Events> rows[] = {
      // At this very moment; each row takes two seconds.
      {donate,
       {expiring("other", "b", 0)},
       thenRenewals({will, accepting + "[b]", posted, "io: store a b", done, did}, "b", "other")},
      {donate, a,
       thenRenewals({will, accepting + "[a]", posted, "io: store a b", done, did}, "a", "app")},
      // All values are offered, also those that are not held.
      {donate,
       {expiring("other", "b", -1), expiring("other", "rejected", -1)},
       thenRenewals({will, accepting + "[b,rejected]", posted, "io: store a b", done, did,
                     "background: preExpiredDonations: [b,rejected]"},
                    "b,rejected", "other", 2)},
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

TEST_F(CorvelRequestsTest, MakesOneCardAndOneSaveOfChangesInARowAndDividesThemByWhatIsBetween) {
  const auto a = email("a@x", from("app", "a"));
  const auto b = email("b@x", from("app", "b"));
  setEnabled(true);
  takeTrace();
  send(donate, {a});
  send(donate, {});
  send(removeIdentifiers, {a});
  send(donate, {b});
  send(list);
  send(donate, {a});
  Events events = eventsSoFar();
  std::erase_if(events, [](const std::string& event) {
    return event.find("Request: ") != event.npos || event.find("accepting") != event.npos;
  });
  EXPECT_EQ(events,
            (Events{posted, posted, posted, posted, "io: store b", "background: reply no error",
                    "background: reply list b", "io: store b a", "background: reply no error",
                    "background: reply true no error", "background: reply no error",
                    "background: reply no error"}));
}

TEST_F(CorvelRequestsTest, FailsAChangeThatFindsNoMemoryWithoutThoseBesideIt) {
  setEnabled(true);
  takeTrace();
  curated->failures = 2;  // of the card for both, then of that for the first alone
  send(donate, {email("a@x", from("app", "a"))});
  send(donate, {email("b@x", from("app", "b"))});
  testing::internal::CaptureStderr();
  run();
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "quenlet: a block has failed: std::bad_alloc\n");
  EXPECT_EQ(identifiersOf(persistence->kept), "b");
  takeTrace();
  EXPECT_EQ(replyTo(fetch), "card b@x");
}

TEST_F(CorvelRequestsTest, KeepsTheChangeWhenItsSaveFails) {
  hold({email("a@x", from("app", "a"))});
  persistence->failure = makeError("disk", 28);
  EXPECT_EQ(eventsWithRenewals(donate, {expiring("other", "b", -1)}),
            thenRenewals({"caller: will", "caller: acceptingDonations: [b]", posted,
                          "io: store a b", "background: reply error disk 28", "background: did",
                          "background: preExpiredDonations: [b]"},
                         "b", "other"));
  EXPECT_EQ(eventsFor(removeIdentifiers, {email("a@x", from("app", "a"))}),
            (Events{"caller: will", posted, "io: store b", "background: reply false error disk 28",
                    "background: did"}));
  EXPECT_EQ(replyTo(list), "list b");
}

TEST_F(CorvelRequestsTest, HoldsOneValueAnIdentifierAndNoRejectedOne) {
  environment->feedback->rejected = {"rejected"};
  const DonationValuePtr b = email("b@x", from("app", "b"));
  hold({email("a@x", from("app", "\u00e9")), b, email("r@x", from("app", "rejected")),
        email("c@x", from("other", "e\u0301"))});
  EXPECT_EQ(replyTo(fetch), "card c@x b@x");
  eventsOf(removeIdentifiers, {b, b, email("n@x", from("app", "none"))});
  EXPECT_EQ(replyTo(fetch), "card c@x");
  EXPECT_EQ(identifiersOf(persistence->kept), "e\u0301");
  // The first value, which the identifier was found by, is gone by now.
  eventsOf(donate, {email("d@x", from("app", "\u00e9"))});
  EXPECT_EQ(replyTo(fetch), "card d@x");
}

TEST_F(CorvelRequestsTest, DropsWhatIsKnownToBeRejectedOnlyLater) {
  agent->restorePersistedState();
  hold({email("a@x", from("app", "a")), email("b@x", from("app", "b"))});
  environment->feedback->rejected = {"a", "other"};
  for (const Events& expected : {Events{posted, "io: store b"}, Events()}) {
    environment->feedback->changeHandler();
    EXPECT_EQ(eventsSoFar(), expected);
    EXPECT_EQ(replyTo(fetch), "card b@x");
  }
}

TEST_F(CorvelRequestsTest, RestoresWhatIsStillGood) {
  environment->feedback->rejected = {"rejected"};
  environment->donors.install("app");
  const std::string own = AccountsBundleIdentifier;
  persistence->kept = {
      expiring("app", "twice", 1e9, "1@x"),   expiring("app", "expired", 0, "2@x"),
      expiring("app", "soon", 604799, "3@x"), expiring("app", "week", 604800, "4@x"),
      expiring("app", "rejected", 1, "5@x"),  expiring("app", "twice", 1e9, "6@x"),
      expiring("app", "twice", -1, "9@x"),    expiring(own, "own", 604799, "7@x")};
  agent->restorePersistedState();
  EXPECT_EQ(
      eventsWithRenewals(donate, {email("8@x", from("app", "new"))}),
      (Events{
          "caller: will", "caller: acceptingDonations: [new]", "writer: beginRestorePersistedState",
          "writer: endRestorePersistedState", posted, "io: store twice soon week own new",
          "background: reply no error", "background: did", "background: make loader",
          "background: willRenewValues:withDonor: [expired,soon,twice],app", "background: load app",
          "background: renew expired", "background: renew soon", "background: renew twice",
          "background: make loader", "background: willRenewValues:withDonor: [new],app",
          "background: load app", "background: renew new"}));
  setEnabled(true);
  EXPECT_EQ(replyTo(list), "list twice soon week own new");
  EXPECT_EQ(replyTo(fetch), "card 6@x 3@x 4@x 7@x 8@x");

  persistence->failure = makeError("disk", 5);
  agent->restorePersistedState();
  EXPECT_EQ(eventsSoFar(), Events{"writer: beginRestorePersistedState"});
  EXPECT_EQ(replyTo(list), "list twice soon week own new");
}

TEST_F(CorvelRequestsTest, KeepsTheFileWhenAClockThatMayBeWrongHasExpiredMostOfIt) {
  const std::tuple<int, int, bool> rows[] = {
      {4, 0, false}, {5, 5, false}, {5, 4, true}, {5, 0, true}, {0, 5, false}};
  for (const auto& [expired, good, isKept] : rows) {
    persistence->kept.clear();
    for (int i = 0; i < expired + good; ++i) {
      persistence->kept.push_back(
          expiring(AccountsBundleIdentifier, std::to_string(i), i < expired ? 0 : 1));
    }
    Events expected = {"writer: beginRestorePersistedState", "writer: endRestorePersistedState"};
    if (isKept) {
      expected.insert(expected.begin() + 1, "writer: keep " + identifiersOf(persistence->kept));
    }
    testing::internal::CaptureStderr();
    agent->restorePersistedState();
    EXPECT_EQ(eventsSoFar(), expected) << expired << " and " << good;
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              isKept ? "quenlet: donations: " + std::to_string(expired) + " of " +
                           std::to_string(expired + good) +
                           " have expired by this machine's clock; their file stays beside the "
                           "next one\n"
                     : "");
  }
}

}  // namespace
}  // namespace quenlet
