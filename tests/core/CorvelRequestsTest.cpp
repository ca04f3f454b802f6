#include "tests/core/AgentFixture.h"

namespace quenlet {
namespace {

using namespace CorvelSelector;

const std::string posted = std::string("writer: post ") + MeCardValuesDidChangeNotification;

class CorvelRequestsTest : public AgentFixture {
 protected:
  static std::string will(const std::string& request) {
    return "caller: agentWillHandleRequest: " + request;
  }
  static std::string did(const std::string& scheduler, const std::string& request) {
    return scheduler + ": agentDidHandleRequest: " + request;
  }
  static std::string refused(const std::string& request) {
    return "caller: featureNotEnabled: " + request;
  }
};

TEST_F(CorvelRequestsTest, RefusesWhileTheFeatureIsOff) {
  const struct {
    std::string request;
    bool servedWhileUndetermined;
    Events afterRefusal;
  } rows[] = {
      {donate, true, {"caller: reply error 1"}},
      {removeIdentifiers, true, {"caller: reply false error 1"}},
      {removeBundle, true, {"caller: reply false error 1"}},
      {fetch, false, {did("caller", fetch), "background: reply error 1"}},
      {synchronousFetch, false, {"immediate: reply error 1", did("caller", synchronousFetch)}},
      {list, false, {"caller: reply error 1"}},
  };
  const DonationValues values = {email("a@x")};
  for (const bool undetermined : {true, false}) {
    if (!undetermined) disable();
    for (const auto& row : rows) {
      SCOPED_TRACE(row.request);
      Events expected = {will(row.request), refused(row.request)};
      expected.insert(expected.end(), row.afterRefusal.begin(), row.afterRefusal.end());
      if (undetermined && row.servedWhileUndetermined) {
        EXPECT_EQ(eventsOf(row.request, values).back(), did("background", row.request));
      } else {
        EXPECT_EQ(eventsOf(row.request, values), expected);
      }
    }
  }
}

TEST_F(CorvelRequestsTest, ServesEachRequestInOrderAndOnItsSchedulers) {
  const DonationValues a = {email("a@x", from("app", "a"))};
  const DonationValues unknown = {email("c@x", from("none", "c"))};
  const std::string accepting = "caller: acceptingDonations:";
  hold({a.front(), email("b@x", from("other", "b"))});
  const struct {
    std::string request;
    DonationValues values;
    Events expected;
  } rows[] = {
      {donate,
       a,
       {will(donate), accepting, posted, "io: store a b", "background: reply no error",
        "background: renew a", did("background", donate)}},
      {donate,
       {},
       {will(donate), accepting, "background: reply no error", did("background", donate)}},
      {list, {}, {will(list), did("reader", list), "background: reply list a b"}},
      {fetch, {}, {will(fetch), "caller: reply card a@x b@x", did("caller", fetch)}},
      {synchronousFetch,
       {},
       {will(synchronousFetch), "caller: reply card a@x b@x", did("caller", synchronousFetch)}},
      {removeIdentifiers,
       unknown,
       {will(removeIdentifiers), posted, "io: store a b", "background: reply true no error",
        did("background", removeIdentifiers)}},
      {removeIdentifiers,
       {},
       {will(removeIdentifiers), "background: reply true no error",
        did("background", removeIdentifiers)}},
      {removeBundle,
       {},
       {will(removeBundle), "background: reply true no error", did("background", removeBundle)}},
      {removeBundle,
       a,
       {will(removeBundle), posted, "io: store b", "background: reply true no error",
        did("background", removeBundle)}},
      {fetch, {}, {will(fetch), "caller: reply card b@x", did("caller", fetch)}},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(eventsOf(row.request, row.values), row.expected) << row.request;
  }
}

TEST_F(CorvelRequestsTest, HandsExpiredDonationsOffTwice) {
  const Date past = environment->schedulers.now().addingSeconds(-1);
  enable();
  EXPECT_EQ(
      eventsOf(donate, {email("a@x", from("app", "a")),
                        email("b@x", from("app", "b", std::nullopt, past))}),
      (Events{will(donate), "caller: acceptingDonations:", posted, "io: store a b",
              "background: reply no error", "background: renew a b", did("background", donate),
              "background: preExpiredDonations:", "background: renew b"}));
}

TEST_F(CorvelRequestsTest, KeepsTheChangeWhenItsSaveFails) {
  const Date past = environment->schedulers.now().addingSeconds(-1);
  hold({email("a@x", from("app", "a"))});
  persistence->failure = makeError("disk", 501);
  EXPECT_EQ(eventsOf(donate, {email("b@x", from("app", "b", std::nullopt, past))}),
            (Events{will(donate), "caller: acceptingDonations:", posted, "io: store a b",
                    "background: reply error 501", did("background", donate),
                    "background: preExpiredDonations:", "background: renew b"}));
  EXPECT_EQ(eventsOf(removeIdentifiers, {email("a@x", from("app", "a"))}),
            (Events{will(removeIdentifiers), posted, "io: store b",
                    "background: reply false error 501", did("background", removeIdentifiers)}));
  EXPECT_EQ(replyTo(list), "list b");
  ErrorPtr replied;
  agent->donateMeCardValues({email("c@x")}, [&](const ErrorPtr& error) { replied = error; });
  run();
  EXPECT_EQ(replied, persistence->failure);
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

TEST_F(CorvelRequestsTest, DeletesABundleFromMemoryAlone) {
  hold({email("a@x", from("app", "a")), email("b@x", from("other", "b"))});
  agent->deleteDonationsWithBundleID("app");
  run();
  EXPECT_EQ(takeTrace(), Events{});
  EXPECT_EQ(replyTo(list), "list b");
  EXPECT_EQ(replyTo(fetch), "card a@x b@x");
  EXPECT_EQ(identifiersOf(persistence->kept), "a b");
  static_cast<void>(eventsOf(donate, {email("c@x", from("third", "c"))}));
  EXPECT_EQ(identifiersOf(persistence->kept), "b c");
  EXPECT_EQ(replyTo(fetch), "card b@x c@x");
}

TEST_F(CorvelRequestsTest, GivesAListThatLaterChangesDoNotTouch) {
  hold({email("a@x", from("app", "a"))});
  std::shared_ptr<const DonationValues> taken;
  agent->meCardDonations([&](const auto& values, const ErrorPtr&) { taken = values; });
  run();
  static_cast<void>(eventsOf(removeBundle, {email("a@x")}));
  EXPECT_EQ(identifiersOf(*taken), "a");
}

TEST_F(CorvelRequestsTest, RestoresWhatIsStillGood) {
  const auto expiring = [this](const char* address, const char* identifier, double inSeconds) {
    return email(address, from("app", identifier, std::nullopt,
                               environment->schedulers.now().addingSeconds(inSeconds)));
  };
  environment->feedback->rejectedDonations = {"rejected"};
  persistence->kept = {expiring("1@x", "twice", 1e9),   expiring("2@x", "expired", 0),
                       expiring("3@x", "soon", 604799), expiring("4@x", "week", 604800),
                       expiring("5@x", "rejected", 1),  expiring("6@x", "twice", 1e9)};
  agent->restorePersistedState();
  send(donate, {email("7@x", from("app", "new"))});
  run();
  Events events = takeTrace();
  events.resize(5);
  EXPECT_EQ(events, (Events{will(donate),
                            "caller: acceptingDonations:", "writer: beginRestorePersistedState",
                            "writer: renew expired soon", "writer: endRestorePersistedState"}));
  enable();
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
