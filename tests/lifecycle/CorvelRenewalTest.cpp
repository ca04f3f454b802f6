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
      dates +=
          value->origin().donationIdentifier + " " + value->origin().expirationDate.iso8601() + ";";
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
  struct Row {
    const char* name;
    std::optional<Date> date;
    ErrorPtr error;
    std::string logged;
    std::string held;
  };
  const Date past(1767000000);
  const Date future(1800000000);
  const std::string renewed = "caller: didRenewValue:untilDate: a,";
  const std::string failed = "caller: couldNotRenewBecauseDonorError: ";
  const std::string before = "a 4001-01-01T00:00:00Z;";
  const Row rows[] = {
      {"a later date", future, nullptr, renewed + future.iso8601(), "a 2027-01-15T08:00:00Z;"},
      {"a date and an error", future, busy, renewed + future.iso8601(), "a 2027-01-15T08:00:00Z;"},
      {"a date that has passed", past, nullptr, renewed + past.iso8601(), ""},
      {"an error", std::nullopt, busy, failed + "donor 7", before},
      {"nothing", std::nullopt, nullptr,
       failed + "ovaro.quenlet.donation-error 2: the donor gave neither a date nor an error",
       before},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    hold({email("a@x", from("app", "a", "cluster"))});
    donor->asked.clear();
    eventsOfRenewing({email("a@x", from("app", "a", "cluster"))});
    EXPECT_EQ(eventsOfAnswer(0, row.date, row.error).front(), row.logged);
    EXPECT_EQ(heldDates(), row.held);
    if (!persistence->kept.empty()) {
      const DonationOrigin& origin = persistence->kept.front()->origin();
      EXPECT_EQ(origin.clusterIdentifier, "cluster");
      EXPECT_EQ(origin.donationDate, Date(1.5));
    }
  }
  hold({email("a@x", from("app", "a"))});
  eventsOfRenewing({email("a@x", from("app", "a"))});
  eventsOfAnswer(donor->asked.size() - 1, environment->schedulers.now(), nullptr);
  EXPECT_EQ(heldDates(), "") << "a date that is now";
}

TEST_F(CorvelRenewalTest, BringsBackWhatExpiredWhileTheAgentWasDown) {
  persistence->kept = {email("a@x", from("app", "a", std::nullopt, later(-5)))};
  agent->restorePersistedState();
  setEnabled(true);
  EXPECT_EQ(replyTo(CorvelSelector::list), "list ");
  runRenewals();
  eventsOfAnswer(0, later(100), nullptr);
  EXPECT_EQ(replyTo(CorvelSelector::fetch), "card a@x");
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

TEST_F(CorvelRenewalTest, PrintsWhatOneDonorAnswersToAPlaceholder) {
  environment->donors.installed["third"] = std::make_shared<FakeDonorObject>();
  testing::internal::CaptureStdout();
  for (const char* bundle : {"other", "third", "app"}) {
    agent->discoverExtensionWithIdentifier(bundle);
  }
  donor->asked.back()(Date(1767225600), makeError("donor", 7));
  EXPECT_EQ(testing::internal::GetCapturedStdout(),
            "Could not discover extension: donors 404\n"
            "Donation renewed until 2026-01-01T00:00:00Z\nError renewing: donor 7\n");
}

}  // namespace
}  // namespace quenlet
