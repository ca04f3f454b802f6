#include <gmock/gmock.h>

#include "analytics/AugmentationClassifier.h"
#include "analytics/MetricsAttempt.h"
#include "tests/support/GoldenFile.h"
#include "tests/support/RecordingAgent.h"
#include "tests/support/TestEnvironment.h"

namespace quenlet {
namespace {

// Notes each write under a key.
class FakeDefaults final : public UserDefaults {
 public:
  explicit FakeDefaults(Trace& shared) : trace(shared) {}
  std::optional<PropertyList> lastAttempt;
  ErrorPtr failure;

  std::optional<PropertyList> objectForKey(const std::string& key) override {
    return key == LastMetricsAttemptKey ? lastAttempt : std::nullopt;
  }
  ErrorPtr setObject(PropertyList object, const std::string& key) override {
    trace.note("set " + key);
    if (!failure) lastAttempt = std::move(object);
    return failure;
  }

 private:
  Trace& trace;
};

// Notes what is reported. The reporter keeps the first test's log; the trace is the present one's.
class ReportSink final : public SystemLog, public CounterStore {
 public:
  static inline Trace* trace = nullptr;
  static inline bool isLogEnabled = true;
  static inline int logsMade = 0;

  bool isDefaultLevelEnabled() const override { return isLogEnabled; }
  void write(const std::string& line) override { trace->note(line); }
  void setScalar(const std::string& key, std::int64_t value) override { note(key, " = ", value); }
  void addSample(const std::string& key, double sample) override {
    note(key, " + ", std::lround(sample));
  }

 private:
  static void note(const std::string& key, const char* sign, std::int64_t number) {
    trace->note(key + sign + std::to_string(number));
  }
};

class MetricsAttemptTest : public testing::Test {
 protected:
  MetricsAttemptTest() {
    ReportSink::trace = &environment.trace;
    environment.contacts->whenAsked = [this](const auto& keys) {
      environment.trace.note("fetch");
      EXPECT_EQ(keys,
                (std::vector{ContactGivenNameKey, ContactFamilyNameKey, ContactEmailAddressesKey,
                             ContactPhoneNumbersKey, ContactPostalAddressesKey}));
    };
  }
  [[nodiscard]] PlatformServices services() {
    PlatformServices services = environment.services();
    services.userDefaults = [this] { return defaults; };
    services.counterStore = [] { return std::make_shared<ReportSink>(); };
    services.makeSystemLog = [](const std::string& subsystem, const std::string& category) {
      EXPECT_EQ(subsystem + " " + category, "ovaro.quenlet analytics");
      ++ReportSink::logsMade;
      return std::make_shared<ReportSink>();
    };
    services.makeProcessTransaction = [this](const std::string& name) {
      environment.trace.note("begin " + name);
      return std::make_shared<ProcessTransaction>(
          std::make_shared<CancelBlock>([this] { environment.trace.note("end"); }));
    };
    return services;
  }
  // What happened, a line each, without the scheduler.
  std::string take() {
    std::string lines;
    for (const auto& event : environment.trace.take()) {
      lines += event.substr(event.find(": ") + 2) + "\n";
    }
    return lines;
  }
  std::string attempt() {
    MetricsAttempt::runMetricsAttempt(agent);
    return take();
  }

  static inline const std::string start =
      "willReportAnalytics\nbegin ovaro.quenlet-agent.metrics\nset last-metrics-attempt\nfetch\n";
  TestEnvironment environment;
  const std::shared_ptr<FakeDefaults> defaults = std::make_shared<FakeDefaults>(environment.trace);
  const std::shared_ptr<RecordingAgent> agent = std::make_shared<RecordingAgent>();
  const Date now = environment.schedulers.now();
  const PlatformServices::Scope scope{services()};
};

TEST_F(MetricsAttemptTest, ReportsBothCardsAndLastsUntilTheDonatedOneIsThere) {
  GoldenParts reports("tests/analytics/both-cards.txt");
  ContactFields curated, donated;
  curated.familyName = "Lee";
  curated.emailAddresses = {entryOf<std::string>(*email("own@x")),
                            entryOf<std::string>(*email("0@x"))};
  for (int i = 0; i < 7; ++i) {
    const std::string digit = std::to_string(i);
    const auto line = entryOf<PhoneNumber>(*phone("+49 30 231250" + digit));
    if (i < 3) curated.phoneNumbers.append(line);
    donated.phoneNumbers.append(line);
    if (i < 3) donated.emailAddresses.append(entryOf<std::string>(*email(digit + "@x")));
    const auto address = entryOf<PostalAddress>(*postal({.country = digit}));
    if (i < 2) curated.postalAddresses.append(address);
    if (i < 5) donated.postalAddresses.append(address);
  }
  environment.contacts->card = std::make_shared<const Contact>(curated);
  agent->contact = std::make_shared<const Contact>(donated);
  agent->holdsReplies = true;
  EXPECT_EQ(attempt(), reports.take("both cards, before the donated one is there"));
  EXPECT_EQ(defaults->lastAttempt, PropertyList(now));
  agent->waitForHeldReply()();
  EXPECT_EQ(take(), reports.take("the donated card"));
}

TEST_F(MetricsAttemptTest, ReportsTheFieldsOfACardWithoutADonatedOne) {
  GoldenParts reports("tests/analytics/own-card.txt");
  ContactFields named, phoneOnly;
  named.givenName = "Ann";
  named.phoneNumbers = phoneOnly.phoneNumbers = {entryOf<PhoneNumber>(*phone("112"))};
  agent->setError(makeError(DonationErrorDomain, 1));
  for (const auto& [name, card] :
       {std::pair("a name and a number", named), std::pair("a number", phoneOnly),
        std::pair("nothing", ContactFields())}) {
    defaults->lastAttempt.reset();
    environment.contacts->card = std::make_shared<const Contact>(card);
    EXPECT_EQ(attempt(), reports.take(name));
  }
  ReportSink::isLogEnabled = false;
  defaults->lastAttempt.reset();
  EXPECT_THAT(attempt(), testing::StartsWith(start + "ovaro.quenlet.me-card.count = 1\n"));
  ReportSink::isLogEnabled = true;
  EXPECT_EQ(ReportSink::logsMade, 1) << "for all reports of the process";
}

TEST_F(MetricsAttemptTest, UsesTheDayUpWithoutACard) {
  const std::string runs = start + "noMeCard\ndidReportAnalytics\nend\n";
  const auto stopsFor = [](const std::string& date) {
    return "willReportAnalytics\nwithinReportingInterval: " + date + "\ndidReportAnalytics\n";
  };
  const std::tuple<const char*, std::optional<PropertyList>, std::string> rows[] = {
      {"missing", std::nullopt, runs},
      {"a string", "2026-01-01T00:00:00Z", runs},
      {"a second more than a day ago", now.addingSeconds(-86401), runs},
      {"a day ago", now.addingSeconds(-86400), stopsFor("2025-12-31T00:00:00Z")},
      {"in the future", now.addingSeconds(86401), stopsFor("2026-01-02T00:00:01Z")},
  };
  for (const auto& [name, last, events] : rows) {
    defaults->lastAttempt = last;
    EXPECT_EQ(attempt(), events) << name;
    EXPECT_EQ(defaults->lastAttempt, events == runs ? PropertyList(now) : last) << name;
  }
  EXPECT_EQ(agent->takeCalls(), "");
}

TEST_F(MetricsAttemptTest, RunsNoEarlierForTheWholeSecondsOfTheFileAndEvenWithoutIt) {
  PlatformServices late = services();
  late.now = [this] { return now.addingSeconds(0.25); };
  const PlatformServices::Scope lateScope(late);
  attempt();
  EXPECT_EQ(defaults->lastAttempt, PropertyList(now.addingSeconds(1)));
  defaults->lastAttempt.reset();
  defaults->failure = makePosixError(ENOSPC, "write");
  testing::internal::CaptureStderr();
  EXPECT_THAT(attempt(), testing::StartsWith(start + "noMeCard\n"));
  EXPECT_THAT(testing::internal::GetCapturedStderr(), testing::StartsWith("quenlet: last-metrics"));
}

// Sorts values, each behind a 'c' for the curated or a 'd' for the donated card, in this order.
template <typename T>
std::string sorted(const Events& values, T (*valueOf)(const std::string& text)) {
  AugmentationBucket<T> bucket;
  for (const std::string& text : values) {
    const T value = valueOf(text.substr(1));
    text.front() == 'c' ? bucket.addCurated(value) : bucket.addDonated(value);
  }
  const std::string text = bucket.description();
  return text.substr(text.find("common="));
}

TEST(AugmentationBucketTest, TellsWhatIsOnBothCardsAndWhatWasOnlyDonated) {
  const std::pair<Events, const char*> addresses[] = {
      {{"c\u00e9@x", "ca@x", "ca@x", "de\u0301@x", "dA@x"},
       "common=(e\u0301@x) uniqueToCurated=(a@x) uniqueToDonated=(A@x)"},
      {{"ca@x", "da@x", "da@x", "ca@x", "dc@x", "db@x", "dc@x"},
       "common=(a@x) uniqueToCurated=() uniqueToDonated=(c@x, b@x)"},
      {{"db@x", "d\u00e9@x", "ce\u0301@x", "ca@x"},
       "common=(e\u0301@x) uniqueToCurated=(a@x) uniqueToDonated=(b@x)"},
  };
  for (const auto& [values, lists] : addresses) {
    EXPECT_EQ(sorted<std::string>(values, [](const auto& text) { return text; }), lists);
  }
  const std::pair<Events, const char*> numbers[] = {
      {{"c+49 30 2312500", "d030 2312500", "d0049302312500", "d112"},
       "common=(030 2312500) uniqueToCurated=() uniqueToDonated=(112)"},
      // The numbers of two areas are like the one without an area: the first of them counts.
      {{"c+1 212 555 0143", "c+1 202 555 0143", "d555 0143", "d+1 212 555 0143"},
       "common=(555 0143) uniqueToCurated=(+1 202 555 0143) uniqueToDonated=()"},
  };
  const auto number = [](const std::string& text) { return *PhoneNumber::withStringValue(text); };
  for (const auto& [values, lists] : numbers) EXPECT_EQ(sorted<PhoneNumber>(values, number), lists);
}

TEST(AugmentationBucketTest, ComparesAllFieldsOfPostalAddresses) {
  AugmentationBucket<PostalAddress> bucket;
  for (const char* key : {"street", "subLocality", "city", "subAdministrativeArea", "state",
                          "postalCode", "country", "isoCountryCode"}) {
    for (const char* text : {"", "\u00e9", "e\u0301"}) {
      PostalAddress address;
      address.*PostalAddress::fieldForKey(key) = text;
      bucket.addDonated(address);
    }
  }
  EXPECT_EQ(bucket.uniqueToDonated().size(), 9U) << "the empty one, and one for each field";
}

TEST(AugmentationStatusTest, DescribesTheCountsOfEachKind) {
  EXPECT_EQ(AugmentationStatus(1, 2, 3, 4, 5, 6).description(),
            "<AugmentationStatus email addresses=(1 matched, 2 unmatched), phone numbers=(3 "
            "matched, 4 unmatched), postal addresses=(5 matched, 6 unmatched)>");
}

}  // namespace
}  // namespace quenlet
