#include "analytics/MetricsAttempt.h"

#include <gmock/gmock.h>

#include "analytics/AggregateAnalyticsReporter.h"
#include "analytics/MeCardClassifier.h"
#include "platform/donations/PropertyListUserDefaults.h"
#include "platform/files/PosixDataProxy.h"
#include "tests/support/RecordingAgent.h"
#include "tests/support/TemporaryDirectory.h"
#include "tests/support/TestEnvironment.h"

namespace quenlet {
namespace {

using testing::ElementsAreArray;

// User defaults, counters and the system log, which note what they are told.
class TracedServices final : public UserDefaults, public CounterStore, public SystemLog {
 public:
  explicit TracedServices(Trace& shared) : trace(shared) {}
  std::optional<PropertyList> lastAttempt;
  ErrorPtr failure;
  bool logEnabled = true;

  std::optional<PropertyList> objectForKey(const std::string& key) override {
    return key == "last-metrics-attempt" ? lastAttempt : std::nullopt;
  }
  ErrorPtr setObject(PropertyList object, const std::string& forKey) override {
    trace.note("set " + forKey);
    if (!failure) lastAttempt = std::move(object);
    return failure;
  }
  void setScalar(const std::string& key, std::int64_t value) override {
    trace.note(key + " = " + std::to_string(value));
  }
  void addSample(const std::string& key, double sample) override {
    trace.note(key + " + " + std::to_string(static_cast<int>(sample)));
  }
  bool isDefaultLevelEnabled() const override { return logEnabled; }
  void write(const std::string& line) override { trace.note(line); }

 private:
  Trace& trace;
};

// The reporter that the process shares keeps the log that it was made with: this one writes to that
// of the current test.
class CurrentLog final : public SystemLog {
 public:
  static inline SystemLog* current = nullptr;
  bool isDefaultLevelEnabled() const override { return current->isDefaultLevelEnabled(); }
  void write(const std::string& line) override { current->write(line); }
};

class MetricsAttemptTest : public testing::Test {
 protected:
  MetricsAttemptTest() { CurrentLog::current = traced.get(); }
  [[nodiscard]] PlatformServices services() {
    PlatformServices services = environment.services();
    services.userDefaults = [this] { return traced; };
    services.counterStore = [this] { return traced; };
    services.makeSystemLog = [](const std::string& subsystem, const std::string& category) {
      EXPECT_EQ(subsystem + " " + category, "ovaro.quenlet analytics");
      return std::make_shared<CurrentLog>();
    };
    services.makeProcessTransaction = [this](const std::string& name) {
      environment.trace.note("begin " + name);
      return std::make_shared<ProcessTransaction>(
          name, std::make_shared<CancelBlock>([this] { environment.trace.note("end"); }));
    };
    return services;
  }
  void haveCardWithNameAndPhone() {
    ContactFields fields;
    fields.familyName = "Lee";
    fields.phoneNumbers.push_back(std::make_shared<const LabeledValue<PhoneNumber>>(
        LabeledValue<PhoneNumber>{"", *PhoneNumber::withStringValue("112"), {}}));
    environment.contacts->card = std::make_shared<const Contact>(std::move(fields));
  }
  // What happened, without the scheduler.
  Events take() {
    Events events = environment.trace.take();
    for (auto& event : events) event.erase(0, event.find(": ") + 2);
    return events;
  }
  Events attempt() {
    MetricsAttempt::runMetricsAttempt(agent);
    return take();
  }

  TestEnvironment environment;
  const std::shared_ptr<TracedServices> traced =
      std::make_shared<TracedServices>(environment.trace);
  const std::shared_ptr<RecordingAgent> agent = std::make_shared<RecordingAgent>();
  const Date now = environment.schedulers.now();
  const PlatformServices::Scope scope{services()};
};

const Events start = {"willReportAnalytics", "begin ovaro.quenlet-agent.metrics",
                      "set last-metrics-attempt"};
const Events cardReport = {
    "User has 1 me cards",
    "ovaro.quenlet.me-card.count = 1",
    "The me card has name components",
    "The me card does not have email addresses",
    "The me card has phone numbers",
    "The me card does not have postal addresses",
    "ovaro.quenlet.me-card.has-name = 1",
    "ovaro.quenlet.me-card.has-email-address = 0",
    "ovaro.quenlet.me-card.has-phone-number = 1",
    "ovaro.quenlet.me-card.has-postal-address = 0",
};

auto are(std::initializer_list<Events> parts) {
  Events all;
  for (const Events& part : parts) all.insert(all.end(), part.begin(), part.end());
  return ElementsAreArray(all);
}

TEST_F(MetricsAttemptTest, ReportsTheCardAndThenHowFarTheDonatedOneAddsToIt) {
  haveCardWithNameAndPhone();
  agent->holdsReplies = true;
  EXPECT_THAT(attempt(), are({start, cardReport})) << "the transaction lasts until the reply";
  EXPECT_EQ(traced->lastAttempt, PropertyList(now));
  EXPECT_EQ(environment.contacts->askedFor, MeCardClassifier::descriptors());
  agent->answerHeldFetch();
  const std::string prefix = "ovaro.quenlet.augmentation.";
  EXPECT_THAT(
      take(),
      are({{"Number of donated email addresses : 1 (0 matched, 1 unmatched)",
            "Number of donated phone numbers   : 0 (0 matched, 0 unmatched)",
            "Number of donated postal addresses: 0 (0 matched, 0 unmatched)",
            prefix + "email-address.matched-count + 0",
            prefix + "email-address.unmatched-count + 1", prefix + "phone-number.matched-count + 0",
            prefix + "phone-number.unmatched-count + 0",
            prefix + "postal-address.matched-count + 0",
            prefix + "postal-address.unmatched-count + 0", "didReportAnalytics", "end"}}));
  EXPECT_THAT(attempt(),
              are({{"willReportAnalytics", "withinReportingInterval: 2026-01-01T00:00:00Z",
                    "didReportAnalytics"}}));
}

TEST_F(MetricsAttemptTest, RunsOnceADay) {
  const std::tuple<const char*, std::optional<PropertyList>, bool> rows[] = {
      {"missing", std::nullopt, true},
      {"a string", "2026-01-01T00:00:00Z", true},
      {"a second more than a day ago", now.addingSeconds(-86401), true},
      {"a day ago", now.addingSeconds(-86400), false},
      {"in the future", now.addingSeconds(86401), false},
  };
  for (const auto& [name, last, runs] : rows) {
    traced->lastAttempt = last;
    EXPECT_EQ(attempt().at(1).starts_with("begin"), runs) << name;
  }
}

TEST_F(MetricsAttemptTest, RunsNoEarlierForTheWholeSecondsOfTheFile) {
  const TemporaryDirectory home;
  PlatformServices filed = services();
  filed.userDefaults = [defaults = std::make_shared<PropertyListUserDefaults>(
                            home.path() / "file.plist", std::make_shared<PosixDataProxy>())] {
    return defaults;
  };
  Date date = now.addingSeconds(0.75);
  filed.now = [&date] { return date; };
  const PlatformServices::Scope filedScope(filed);
  for (const auto& [later, runs] : {std::pair(0.0, true), {86400.0, false}, {1.5, true}}) {
    date = date.addingSeconds(later);
    EXPECT_EQ(attempt().at(1).starts_with("begin"), runs) << later;
  }
}

TEST_F(MetricsAttemptTest, UsesTheDayUpWhenACardIsMissing) {
  EXPECT_THAT(attempt(), are({start, {"noMeCard", "didReportAnalytics", "end"}}));
  EXPECT_EQ(agent->takeCalls(), "");
  EXPECT_EQ(traced->lastAttempt, PropertyList(now));

  traced->lastAttempt.reset();
  traced->failure = makePosixError(ENOSPC, "write");
  haveCardWithNameAndPhone();
  agent->error = makeError(DonationErrorDomain, 1);
  testing::internal::CaptureStderr();
  EXPECT_THAT(attempt(),
              are({start, cardReport, {"noDonatedMeCard", "didReportAnalytics", "end"}}));
  EXPECT_THAT(testing::internal::GetCapturedStderr(), testing::StartsWith("quenlet: last-metrics"));
}

TEST_F(MetricsAttemptTest, AddsTheCountsOfALineUpAndWritesOnlyEnabledLines) {
  const auto reporter = AnalyticsReporting::makeStandardReporter();
  EXPECT_EQ(reporter->description(),
            "<AggregateAnalyticsReporter reporters=(<LogAnalyticsReporter>, "
            "<CounterAnalyticsReporter>)>");
  reporter->reportAugmentationStatus(AugmentationStatus(2, 3, 0, 10, 4, 0));
  const Events events = take();
  EXPECT_EQ(events.at(0), "Number of donated email addresses : 5 (2 matched, 3 unmatched)");
  std::string samples;
  for (std::size_t i = 3; i < events.size(); ++i) samples += events[i].substr(events[i].find('+'));
  EXPECT_EQ(samples, "+ 2+ 3+ 0+ 10+ 4+ 0");
  traced->logEnabled = false;
  reporter->reportNumberOfMeCards(7);
  AggregateAnalyticsReporter().reportNumberOfMeCards(8);
  EXPECT_THAT(take(), are({{"ovaro.quenlet.me-card.count = 7"}}));
}

TEST(MeCardClassifierTest, FindsTheKindsOfFieldThatACardCarries) {
  const auto bits = [](const ContactFields& fields) {
    const Contact contact(fields);
    return MeCardClassifier().classifyMeCard(&contact).fields().value().rawValue();
  };
  ContactFields fields;
  fields.middleName = "only";
  EXPECT_EQ(bits(fields), 0);
  fields.givenName = "Ann";
  fields.emailAddresses.push_back(nullptr);
  EXPECT_EQ(bits(fields), 1 | 2);
  fields.postalAddresses.push_back(nullptr);
  EXPECT_EQ(bits(fields), 1 | 2 | 8);
  EXPECT_EQ(MeCardClassifier().classifyMeCard(nullptr), MeCardStatus::none());
}

}  // namespace
}  // namespace quenlet
