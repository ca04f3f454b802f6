#include "mecard/DonatedEntries.h"
#include "tests/core/AgentFixture.h"

namespace quenlet {
namespace {

class CorvelRenewalTest : public AgentFixture {
 protected:
  [[nodiscard]] Date fromNow(double seconds) const {
    return environment->schedulers.now().addingSeconds(seconds);
  }
  // What asking the donors leads to until they have been asked.
  Events eventsOfRenewing(const DonationValues& values) {
    agent->renewWithDonations(values);
    environment->schedulers.advance(1.75);
    EXPECT_EQ(takeTrace(), Events{}) << "nothing is asked before 2 s have passed";
    environment->schedulers.advance(0.25);
    return takeTrace();
  }
  Events eventsOfAnswer(std::size_t request, std::optional<Date> date, const ErrorPtr& error) {
    donor->asked.at(request)(date, error);
    return eventsSoFar();
  }

  const std::shared_ptr<FakeExtension> donor = environment->donors.install("app");
};

TEST_F(CorvelRenewalTest, AsksEachDonorOnceForItsOwnValues) {
  environment->donors.installed["third"] = std::make_shared<FakeDonorObject>();
  const DonationValues values = {email("a@x", from("app", "a")), email("b@x", from("other", "b")),
                                 email("c@x", from("app", "c")), email("d@x", from("third", "d")),
                                 email("e@x", from(AccountsBundleIdentifier, "e"))};
  const std::string asking = "background: willRenewValues:withDonor: ";
  EXPECT_EQ(
      eventsOfRenewing(values),
      (Events{"background: make loader", asking + "[a,c],app", "background: load app",
              "background: renew a", "background: renew c", asking + "[b],other",
              "background: load other", "background: couldNotRenewBecauseLoadingError: donors 404",
              asking + "[d],third", "background: load third",
              "background: couldNotRenewBecauseNotADonorExtension: object"}));
  EXPECT_EQ(eventsOfRenewing({email("a@x", from(AccountsBundleIdentifier, "a")),
                              phone("030 123456", from(SIMCardBundleIdentifier, "b"))}),
            Events{});
}

TEST_F(CorvelRenewalTest, DoesWhatTheDonorAnswers) {
  const ErrorPtr busy = makeError("donor", 7);
  const std::string failed = "caller: couldNotRenewBecauseDonorError: ";
  // The seconds from now to the date, and the error in the log.
  const std::tuple<const char*, std::optional<double>, ErrorPtr, std::string> rows[] = {
      {"a later date", 9e6, nullptr, ""},
      {"a date and an error", 1, busy, ""},
      {"an error", std::nullopt, busy, "donor 7"},
      {"nothing", std::nullopt, nullptr,
       "ovaro.quenlet.donation-error 2: the donor gave neither a date nor an error"},
      {"a date that is now", 0, nullptr, ""},
      {"a date that has passed", -9, busy, ""},
  };
  for (const auto& [name, seconds, error, logged] : rows) {
    SCOPED_TRACE(name);
    const auto value = email("a@x", from("app", "a", "cluster"), "label");
    donor->asked.clear();
    hold({value, email("b@x", from("other", "b"))});
    const auto date = seconds ? std::optional(fromNow(*seconds)) : std::nullopt;
    const Events events = eventsOfAnswer(0, date, error);
    DonationValuePtr expected = value;
    if (!seconds) {
      EXPECT_EQ(events, Events{failed + logged});
    } else {
      const char* stored = *seconds > 0 ? "io: store a b" : "io: store b";
      EXPECT_EQ(events,
                (Events{"caller: didRenewValue:untilDate: a," + date->iso8601(), posted, stored}));
      expected = email("a@x", from("app", "a", "cluster", *date), "label");
    }
    if (seconds && *seconds <= 0) continue;
    ASSERT_EQ(identifiersOf(persistence->kept), "a b");
    EXPECT_EQ(*persistence->kept.front(), *expected);
  }
}

TEST_F(CorvelRenewalTest, AppliesEveryAnswerWhateverWasDeletedMeanwhile) {
  hold({email("a@x", from("app", "a")), email("b@x", from("app", "b"))});
  setEnabled(false);
  agent->disableDonations();
  eventsSoFar();
  const Date date = fromNow(100);
  const std::string renewed = "caller: didRenewValue:untilDate: ";
  EXPECT_EQ(eventsOfAnswer(0, date, nullptr),
            (Events{renewed + "a," + date.iso8601(), posted, "io: store a"}));
  EXPECT_EQ(eventsOfAnswer(1, Date(1), nullptr),
            (Events{renewed + "b,1970-01-01T00:00:01Z", posted, "io: store a"}));
}

TEST_F(CorvelRenewalTest, PrintsWhatADonorAnswersForAPlaceholder) {
  environment->donors.installed["object"] = std::make_shared<FakeDonorObject>();
  const ErrorPtr busy = makeError("donor", 7);
  const std::string until = "Donation renewed until 1970-01-01T00:00:09Z\n";
  const std::tuple<std::string, std::optional<Date>, ErrorPtr, std::string> rows[] = {
      {"none", {}, nullptr, "Could not discover extension: donors 404\n"},
      {"object", {}, nullptr, ""},
      {"app", Date(9), nullptr, until},
      {"app", {}, busy, "Error renewing: donor 7\n"},
      {"app", Date(9), busy, until + "Error renewing: donor 7\n"},
      {"app", {}, nullptr, ""},
  };
  for (const auto& [bundle, date, error, printed] : rows) {
    testing::internal::CaptureStdout();
    agent->discoverExtensionWithIdentifier(bundle);
    Events expected = {"caller: make loader", "caller: load " + bundle};
    if (bundle == "app") {
      expected.emplace_back("caller: renew placeholder");
      donor->asked.back()(date, error);
    }
    run();
    EXPECT_EQ(testing::internal::GetCapturedStdout(), printed);
    EXPECT_EQ(takeTrace(), expected) << "nothing is stored";
  }
  ASSERT_TRUE(donor->lastValue);
  const DonationOrigin origin = donor->lastValue->decoded().origin;
  EXPECT_EQ(entryOf<std::string>(*donor->lastValue)->label, "");
  EXPECT_EQ(origin.bundleIdentifier.size(), 1U);
  EXPECT_TRUE(origin.donationDate == Date() && origin.expirationDate == Date());
}

}  // namespace
}  // namespace quenlet
