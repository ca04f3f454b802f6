#include "analytics/MetricsAttempt.h"

#include <gmock/gmock.h>

#include "analytics/AggregateAnalyticsReporter.h"
#include "analytics/MeCardClassifier.h"
#include "tests/support/RecordingAgent.h"
#include "tests/support/TestEnvironment.h"

namespace quenlet {
namespace {

using testing::ElementsAre;
using testing::ElementsAreArray;

class TracedDefaults final : public UserDefaults {
 public:
  explicit TracedDefaults(Trace& shared) : trace(shared) {}
  PropertyListDictionary kept;
  ErrorPtr failure;

  std::optional<PropertyList> objectForKey(const std::string& key) override {
    const PropertyList* found = findEntry(kept, key);
    return found ? std::optional(*found) : std::nullopt;
  }
  ErrorPtr setObject(PropertyList object, const std::string& forKey) override {
    trace.note("set " + forKey);
    if (!failure) kept.insert_or_assign(forKey, std::move(object));
    return failure;
  }

 private:
  Trace& trace;
};

class TracedCounters final : public CounterStore {
 public:
  explicit TracedCounters(Trace& shared) : trace(shared) {}
  void setScalar(const std::string& key, std::int64_t value) override {
    trace.note(key + " = " + std::to_string(value));
  }
  void addSample(const std::string& key, double sample) override {
    trace.note(key + " + " + std::to_string(static_cast<int>(sample)));
  }

 private:
  Trace& trace;
};

class TracedSystemLog final : public SystemLog {
 public:
  TracedSystemLog(Trace& shared, bool isEnabled) : trace(shared), enabled(isEnabled) {}
  bool isDefaultLevelEnabled() const override { return enabled; }
  void write(const std::string& line) override { trace.note(line); }

 private:
  Trace& trace;
  const bool enabled;
};

class MetricsAttemptTest : public testing::Test {
 protected:
  [[nodiscard]] PlatformServices services() {
    PlatformServices services = environment.services();
    services.userDefaults = [this] { return defaults; };
    services.counterStore = [this] { return std::make_shared<TracedCounters>(trace); };
    services.makeSystemLog = [this](const std::string& subsystem, const std::string& category) {
      EXPECT_EQ(subsystem + " " + category, "ovaro.quenlet analytics");
      return std::make_shared<TracedSystemLog>(trace, logEnabled);
    };
    services.makeProcessTransaction = [this](const std::string& name) {
      trace.note("begin " + name);
      return std::make_shared<ProcessTransaction>(
          name, std::make_shared<CancelBlock>([this] { trace.note("end"); }));
    };
    return services;
  }
  void haveCard(ContactFields fields) {
    environment.contacts->card = std::make_shared<const Contact>(std::move(fields));
  }
  // What happened, without the scheduler.
  Events take() {
    Events events = trace.take();
    for (auto& event : events) event.erase(0, event.find(": ") + 2);
    return events;
  }
  Events attempt() {
    MetricsAttempt::runMetricsAttempt(agent);
    return take();
  }

  TestEnvironment environment;
  Trace& trace = environment.trace;
  const std::shared_ptr<TracedDefaults> defaults = std::make_shared<TracedDefaults>(trace);
  const std::shared_ptr<RecordingAgent> agent = std::make_shared<RecordingAgent>();
  bool logEnabled = true;
  const PlatformServices::Scope scope{services()};
};

constexpr char key[] = "last-metrics-attempt";
const Events start = {"willReportAnalytics", "begin ovaro.quenlet-agent.metrics",
                      std::string("set ") + key};

Events startThen(const Events& rest) {
  Events all = start;
  all.insert(all.end(), rest.begin(), rest.end());
  return all;
}

const Events reportOfNameAndPhone = {
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

ContactFields nameAndPhone() {
  ContactFields fields;
  fields.familyName = "Lee";
  fields.phoneNumbers = {std::make_shared<const LabeledValue<PhoneNumber>>(
      LabeledValue<PhoneNumber>{"", *PhoneNumber::withStringValue("112"), {}})};
  return fields;
}

TEST_F(MetricsAttemptTest, ReportsTheCardAndThenHowFarTheDonatedOneAddsToIt) {
  haveCard(nameAndPhone());
  agent->holdsReplies = true;
  Events expected = startThen(reportOfNameAndPhone);
  EXPECT_THAT(attempt(), ElementsAreArray(expected)) << "the transaction lasts until the reply";
  EXPECT_EQ(*defaults->kept.at(key).date(), environment.schedulers.now());
  EXPECT_EQ(environment.contacts->askedFor, MeCardClassifier::descriptors());
  agent->answerHeldFetch();
  const std::string prefix = "ovaro.quenlet.augmentation.";
  EXPECT_THAT(take(), ElementsAre("Number of donated email addresses : 1 (0 matched, 1 unmatched)",
                                  "Number of donated phone numbers   : 0 (0 matched, 0 unmatched)",
                                  "Number of donated postal addresses: 0 (0 matched, 0 unmatched)",
                                  prefix + "email-address.matched-count + 0",
                                  prefix + "email-address.unmatched-count + 1",
                                  prefix + "phone-number.matched-count + 0",
                                  prefix + "phone-number.unmatched-count + 0",
                                  prefix + "postal-address.matched-count + 0",
                                  prefix + "postal-address.unmatched-count + 0",
                                  "didReportAnalytics", "end"));
  EXPECT_THAT(attempt(),
              ElementsAre("willReportAnalytics", "withinReportingInterval: 2026-01-01T00:00:00Z",
                          "didReportAnalytics"));
}

TEST_F(MetricsAttemptTest, RunsOnceADay) {
  const Date now = environment.schedulers.now();
  const std::tuple<const char*, std::optional<PropertyList>, bool> rows[] = {
      {"missing", std::nullopt, true},
      {"a string", "2026-01-01T00:00:00Z", true},
      {"a number", now.secondsSince1970(), true},
      {"a second more than a day ago", now.addingSeconds(-86401), true},
      {"just more than a day ago", now.addingSeconds(-86400.001), true},
      {"a day ago", now.addingSeconds(-86400), false},
      {"now", now, false},
      {"in the future", now.addingSeconds(86401), false},
  };
  for (const auto& [name, last, runs] : rows) {
    defaults->kept.clear();
    if (last) defaults->kept.emplace(key, *last);
    const Events events = attempt();
    ASSERT_GE(events.size(), 3u) << name;
    EXPECT_EQ(events[1].starts_with("begin"), runs) << name;
    EXPECT_EQ(events[1].starts_with("withinReportingInterval:"), !runs) << name;
    EXPECT_EQ(std::count(events.begin(), events.end(), "didReportAnalytics"), 1) << name;
  }
}

TEST_F(MetricsAttemptTest, UsesTheDayUpWhenACardIsMissing) {
  EXPECT_THAT(attempt(), ElementsAreArray(startThen({"noMeCard", "didReportAnalytics", "end"})));
  EXPECT_EQ(agent->takeCalls(), "");
  EXPECT_EQ(attempt().size(), 3u) << "the attempt counts";

  defaults->kept.clear();
  haveCard(nameAndPhone());
  agent->error = makeError(DonationErrorDomain, 1);
  Events expected = startThen(reportOfNameAndPhone);
  expected.insert(expected.end(), {"noDonatedMeCard", "didReportAnalytics", "end"});
  EXPECT_THAT(attempt(), ElementsAreArray(expected));
}

TEST_F(MetricsAttemptTest, ReportsAllTheSameWhenItsDateCannotBeWritten) {
  defaults->failure = makePosixError(ENOSPC, "write");
  testing::internal::CaptureStderr();
  EXPECT_THAT(attempt(), ElementsAreArray(startThen({"noMeCard", "didReportAnalytics", "end"})));
  EXPECT_THAT(testing::internal::GetCapturedStderr(), testing::StartsWith("quenlet: last-metrics"));
}

TEST_F(MetricsAttemptTest, StandardReporterTellsTheLogInLinesAndTheCountersInSamples) {
  const auto reporter = AnalyticsReporting::makeStandardReporter();
  reporter->reportAugmentationStatus(AugmentationStatus(2, 3, 0, 10, 4, 0));
  const Events events = take();
  ASSERT_EQ(events.size(), 9u);
  EXPECT_EQ(events[0], "Number of donated email addresses : 5 (2 matched, 3 unmatched)");
  EXPECT_EQ(events[1], "Number of donated phone numbers   : 10 (0 matched, 10 unmatched)");
  EXPECT_EQ(events[2], "Number of donated postal addresses: 4 (4 matched, 0 unmatched)");
  std::string samples;
  for (int i = 3; i < 9; ++i) samples += events[i].substr(events[i].find(" + "));
  EXPECT_EQ(samples, " + 2 + 3 + 0 + 10 + 4 + 0");

  logEnabled = false;
  reporter->reportNumberOfMeCards(7);
  EXPECT_THAT(take(), ElementsAre("ovaro.quenlet.me-card.count = 7"));

  AggregateAnalyticsReporter none;
  none.reportNumberOfMeCards(1);
  none.reportAugmentationStatus(AugmentationStatus(1, 1, 1, 1, 1, 1));
  EXPECT_THAT(take(), ElementsAre());
  EXPECT_EQ(reporter->description(),
            "<AggregateAnalyticsReporter reporters=(<LogAnalyticsReporter>, "
            "<CounterAnalyticsReporter>)>");
  EXPECT_EQ(AnalyticsReporting::standardReporter(), AnalyticsReporting::standardReporter());
}

TEST_F(MetricsAttemptTest, ClassifiesCardsByTheKindsOfFieldThatTheyCarry) {
  const auto bits = [](const ContactFields& fields) {
    const Contact contact(fields);
    return MeCardClassifier().classifyMeCard(&contact).fields().value().rawValue();
  };
  ContactFields fields;
  fields.middleName = "only";
  EXPECT_EQ(bits(fields), 0);
  fields.givenName = "Ann";
  EXPECT_EQ(bits(fields), 1);
  EXPECT_EQ(bits(nameAndPhone()), 1 | 4);
  fields.emailAddresses.emplace_back();
  EXPECT_EQ(bits(fields), 1 | 2);
  fields.postalAddresses.emplace_back();
  EXPECT_EQ(bits(fields), 1 | 2 | 8);
  EXPECT_EQ(MeCardClassifier().classifyMeCard(nullptr), MeCardStatus::none());
}

}  // namespace
}  // namespace quenlet
