#include <span>

#include "tests/core/AgentFixture.h"

namespace quenlet {
namespace {

class CorvelRenewalTest : public AgentFixture {
 protected:
  [[nodiscard]] Date later(double seconds) const {
    return environment->schedulers.now().addingSeconds(seconds);
  }
  // What asking the donors leads to until they have been asked.
  Events eventsOfRenewing(const DonationValues& values) {
    agent->renewWithDonations(values);
    run();
    EXPECT_EQ(takeTrace(), Events{}) << "nothing is asked before 2 s have passed";
    runRenewals();
    return takeTrace();
  }
  Events eventsOfAnswer(std::size_t request, std::optional<Date> date, const ErrorPtr& error) {
    donor->asked.at(request)(date, error);
    run();
    return takeTrace();
  }
  [[nodiscard]] std::string heldDates() {
    std::string dates;
    for (const auto& value : persistence->kept) {
      const DonationOrigin& origin = value->origin();
      dates += origin.donationIdentifier + " " + origin.expirationDate.iso8601() + ";";
    }
    return dates;
  }

  const std::shared_ptr<FakeExtension> donor = environment->donors.install("app");
};

TEST_F(CorvelRenewalTest, AsksEachDonorOnceForItsOwnValues) {
  environment->donors.installed["third"] = std::make_shared<FakeDonorObject>();
  const DonationValues values = {email("a@x", from("app", "a")), email("b@x", from("other", "b")),
                                 email("c@x", from("app", "c")), email("d@x", from("third", "d")),
                                 email("e@x", from(AccountsBundleIdentifier, "e"))};
  const std::string asking = "background: willRenewValues:withDonor:";
  EXPECT_EQ(
      eventsOfRenewing(values),
      (Events{asking, "background: load app", "background: renew a", "background: renew c", asking,
              "background: load other", "background: couldNotRenewBecauseLoadingError: donors 404",
              asking, "background: load third",
              "background: couldNotRenewBecauseNotADonorExtension: object"}));
  EXPECT_EQ(eventsOfRenewing({email("a@x", from(AccountsBundleIdentifier, "a")),
                              phone("030 123456", from(SIMCardBundleIdentifier, "b"))}),
            Events{});
}

TEST_F(CorvelRenewalTest, DoesWhatTheDonorAnswers) {
  const ErrorPtr busy = makeError("donor", 7);
  const Date past(1767000000);
  const Date future(1800000000);
  const std::string renewed = "caller: didRenewValue:untilDate: a,";
  const std::string failed = "caller: couldNotRenewBecauseDonorError: ";
  const std::string before = "a 4001-01-01T00:00:00Z;";
  const std::tuple<const char*, std::optional<Date>, ErrorPtr, std::string, std::string> rows[] = {
      {"a later date", future, nullptr, renewed + future.iso8601(), "a 2027-01-15T08:00:00Z;"},
      {"a date and an error", future, busy, renewed + future.iso8601(), "a 2027-01-15T08:00:00Z;"},
      {"a date that has passed", past, nullptr, renewed + past.iso8601(), ""},
      {"an error", std::nullopt, busy, failed + "donor 7", before},
      {"nothing", std::nullopt, nullptr,
       failed + "ovaro.quenlet.donation-error 2: the donor gave neither a date nor an error",
       before},
  };

  for (const auto& [name, date, error, logged, held] : rows) {
    SCOPED_TRACE(name);
    hold({email("a@x", from("app", "a", "cluster"))});
    donor->asked.clear();
    eventsOfRenewing({email("a@x", from("app", "a", "cluster"))});

    EXPECT_EQ(eventsOfAnswer(0, date, error).front(), logged);
    EXPECT_EQ(heldDates(), held);
    if (!persistence->kept.empty()) {
      const DonationOrigin& origin = persistence->kept.front()->origin();
      EXPECT_EQ(origin.clusterIdentifier, "cluster");
      EXPECT_EQ(origin.donationDate, Date(1.5));
    }
  }
}

TEST_F(CorvelRenewalTest, BringsNothingBackThatTheOwnerHadDeleted) {
  const DonationValues values = {email("a@x", from("app", "a")), email("b@x", from("app", "b"))};
  hold(values);
  eventsOfRenewing(values);
  const auto answer = std::span(donor->asked).last(2);
  setEnabled(false);
  answer[0](Date(1), nullptr);
  run();
  EXPECT_EQ(identifiersOf(persistence->kept), "b") << "withdrawn while donations are off";
  agent->disableDonations();
  setEnabled(true);
  answer[1](later(100), nullptr);
  run();
  EXPECT_EQ(heldDates(), "");
}

class CorvelRejectionsTest : public AgentFixture {
 protected:
  using Rejection = void (Corvel::*)(std::string, ErrorReply);
  static constexpr Rejection value = &Corvel::rejectValueWithDonationIdentifier;
  static constexpr Rejection cluster = &Corvel::rejectValuesWithClusterIdentifier;
  Events eventsOfRejecting(Rejection what, const std::string& identifier) {
    ((*agent).*what)(identifier, errorReply());
    run();
    return takeTrace();
  }
};

TEST_F(CorvelRejectionsTest, DropsAndReportsEveryEqualValueOfAnyDonor) {
  hold({email("a@x", from("app", "1")), email("a@x", from("other", "2", "cluster")),
        email("A@x", from("app", "3")), email("a@x", from("app", "4"), "work")});
  const Events expected = {"caller: willRejectDonationIdentifier: 1", posted, "io: store 3 4",
                           "background: didRejectDonationIdentifier: 1",
                           "background: reply no error"};
  EXPECT_EQ(eventsOfRejecting(value, "1"), expected);
  EXPECT_EQ(environment->feedback->rejectedDonations, (std::set<std::string>{"1", "2"}));
}

TEST_F(CorvelRejectionsTest, DropsAClusterAndLeavesValuesWithoutOne) {
  hold({email("a@x", from("app", "1", "c")), email("b@x", from("app", "2", "c")),
        email("c@x", from("app", "3", "")), email("d@x", from("app", "4"))});
  const Events expected = {"caller: willRejectClusterIdentifier: c", posted, "io: store 3 4",
                           "background: didRejectClusterIdentifier: c",
                           "background: reply no error"};
  EXPECT_EQ(eventsOfRejecting(cluster, "c"), expected);
  EXPECT_EQ(environment->feedback->rejectedDonations, (std::set<std::string>{"1", "2"}));
}

TEST_F(CorvelRejectionsTest, TellsOnlyTheLogOfUnknownIdentifiers) {
  hold({image("bytes", from("app", "image", "c"))});
  const std::tuple<Rejection, const char*, std::string> rows[] = {
      {value, "x", "writer: couldNotRejectUnknownDonationIdentifier: x"},
      // An image equals nothing, not even itself.
      {value, "image", "background: couldNotRejectUnknownDonationIdentifier: image"},
      {cluster, "x", "background: couldNotRejectUnknownClusterIdentifier: x"},
      {cluster, "", "background: couldNotRejectUnknownClusterIdentifier:"}};
  for (const auto& [what, identifier, told] : rows) {
    const Events events = eventsOfRejecting(what, identifier);
    ASSERT_EQ(events.size(), 4U);
    EXPECT_EQ(events[1], told);
    EXPECT_EQ(events[3], "background: reply no error");
  }
  EXPECT_EQ(replyTo(CorvelSelector::list), "list image");
}

TEST_F(CorvelRejectionsTest, ReportsAfterAFailedSaveAndDoesNotPutValuesBack) {
  hold({email("a@x", from("app", "1"))});
  persistence->failure = makeError("disk", 28);
  environment->feedback->failure = makeError("feedback", 7);
  const Events events = eventsOfRejecting(value, "1");
  EXPECT_EQ(events[events.size() - 2].substr(0, 48),
            "background: couldNotRejectDonationIdentifier:err");
  EXPECT_EQ(events.back(), "background: reply error 7");
  EXPECT_EQ(replyTo(CorvelSelector::list), "list ");
}

class CorvelDiscoveryTest : public AgentFixture {
 protected:
  Events eventsOfDiscovery() {
    testing::internal::CaptureStdout();
    agent->discoverAllExtensions();
    run();
    static_cast<void>(testing::internal::GetCapturedStdout());
    return takeTrace();
  }
  Events eventsOfAnotherTry() {
    agent->lock()->performWriterBlock([this] { agent->reenableDonations(); });
    run();
    return takeTrace();
  }
  Events eventsOfEnabling() {
    setEnabled(false);
    static_cast<void>(takeTrace());
    setEnabled(true);
    return takeTrace();
  }
  void addAccount() {
    environment->accounts->held.push_back(std::make_shared<const Account>(
        Account{.identifier = "A1", .username = "a@x.org", .enabledDataclasses = {"mail"}}));
  }
};

TEST_F(CorvelDiscoveryTest, AsksExtensionsThenAccountsThenSIMCardsWhenDonationsComeOnAgain) {
  environment->donors.install("app1");
  environment->donors.install("app2");
  environment->donors.installed["app3"] = std::make_shared<FakeDonorObject>();
  addAccount();
  PlatformServices services = environment->services();
  services.deviceInfo = [this] {
    environment->trace.note("look for SIM cards");
    return environment->device;
  };
  const PlatformServices::Scope noting(services);
  const Events expected = {"writer: featureWillEnable",
                           "writer: willDiscoverExtensions",
                           "writer: didDiscoverUnexpectedExtensionType: object",
                           "writer: didDiscoverExtensions",
                           "writer: redonate 1",
                           "writer: redonate 1",
                           "writer: donating: email:A1",
                           "writer: agentWillHandleRequest: donateMeCardValues:completionHandler:",
                           "writer: acceptingDonations:",
                           "writer: willSaveExtensionVersions",
                           "writer: look for SIM cards",
                           "writer: featureDidEnable"};
  Events events = eventsOfEnabling();
  events.resize(expected.size());
  EXPECT_EQ(events, expected);
  EXPECT_EQ(replyTo(CorvelSelector::list), "list email:A1");
}

TEST_F(CorvelDiscoveryTest, SolicitsAgainAfterADiscoveryThatFailed) {
  environment->donors.install("app");
  environment->donors.failure = makeError("discovery", 3);

  eventsOfEnabling();
  EXPECT_TRUE(agent->featureEnabled());
  const Events failed = eventsOfAnotherTry();
  EXPECT_EQ(failed.at(1), "writer: didFailToDiscoverExtensions: discovery 3");
  EXPECT_EQ(failed.at(2), "writer: redonate 1");
  environment->donors.failure = nullptr;
  EXPECT_EQ(eventsOfAnotherTry().at(1), "writer: didDiscoverExtensions");
  EXPECT_EQ(eventsOfAnotherTry(), Events{"writer: featureDidEnable"}) << "nothing is asked";
}

TEST_F(CorvelDiscoveryTest, DonatesAccountsAgainUnlessTheirVersionIsNoted) {
  addAccount();

  for (const int noted : {0, 2, 3, 4}) {
    agent = std::make_shared<Corvel>(environment, persistence, curated);
    persistence->versions = {{AccountsBundleIdentifier, noted}, {"other", 9}};
    for (int round = 0; round < 2; ++round) {
      const Events events = eventsOfDiscovery();
      EXPECT_EQ(std::count(events.begin(), events.end(), "caller: store versions"),
                noted < 3 && round == 0 ? 1 : 0);
      EXPECT_EQ(persistence->versions[AccountsBundleIdentifier], std::max(noted, 3));
    }
  }
  agent = std::make_shared<Corvel>(environment, persistence, curated);
  persistence->failure = makeError("disk", 5);
  EXPECT_EQ(eventsOfDiscovery().at(1), "caller: donating: email:A1") << "there is no table";
}

}  // namespace
}  // namespace quenlet
