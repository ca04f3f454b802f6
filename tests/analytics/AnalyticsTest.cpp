#include <gmock/gmock.h>

#include <random>

#include "analytics/AugmentationClassifier.h"
#include "analytics/MetricsAttempt.h"
#include "platform/foundation/Text.h"
#include "tests/support/RecordingAgent.h"
#include "tests/support/TestEnvironment.h"

namespace quenlet {
namespace {

class FakeDefaults final : public UserDefaults {
 public:
  std::optional<PropertyList> lastAttempt;
  ErrorPtr failure;
  std::optional<PropertyList> objectForKey(const std::string&) override { return lastAttempt; }
  ErrorPtr setObject(PropertyList object, const std::string&) override {
    if (!failure) lastAttempt = std::move(object);
    return failure;
  }
};

// Nobody listens and nobody counts.
class Silence final : public SystemLog, public CounterStore {
 public:
  bool isDefaultLevelEnabled() const override { return false; }
  void write(const std::string&) override { ADD_FAILURE(); }
  void setScalar(const std::string&, std::int64_t) override {}
  void addSample(const std::string&, double) override {}
};

class MetricsAttemptTest : public testing::Test {
 protected:
  [[nodiscard]] PlatformServices services() {
    PlatformServices services = environment.services();
    services.userDefaults = [this] { return defaults; };
    services.counterStore = [] { return std::make_shared<Silence>(); };
    services.makeSystemLog = [](const auto&, const auto&) { return std::make_shared<Silence>(); };
    services.makeProcessTransaction = [this](const std::string& name) {
      environment.trace.note("begin");
      return std::make_shared<ProcessTransaction>(
          name, std::make_shared<CancelBlock>([this] { environment.trace.note("end"); }));
    };
    return services;
  }
  void haveCardWithName() {
    ContactFields fields;
    fields.familyName = "Lee";
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
  const std::shared_ptr<FakeDefaults> defaults = std::make_shared<FakeDefaults>();
  const std::shared_ptr<RecordingAgent> agent = std::make_shared<RecordingAgent>();
  const Date now = environment.schedulers.now();
  const PlatformServices::Scope scope{services()};
};

TEST_F(MetricsAttemptTest, LastsUntilTheDonatedCardIsThereAndFillsTheDay) {
  haveCardWithName();
  agent->holdsReplies = true;
  EXPECT_EQ(attempt(), (Events{"willReportAnalytics", "begin"}));
  EXPECT_EQ(defaults->lastAttempt, PropertyList(now));
  agent->answerHeldFetch();
  EXPECT_EQ(take(), (Events{"didReportAnalytics", "end"}));
  EXPECT_EQ(attempt().at(1), "withinReportingInterval: 2026-01-01T00:00:00Z");
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
    defaults->lastAttempt = last;
    EXPECT_EQ(attempt().at(1).starts_with("begin"), runs) << name;
  }
}

TEST_F(MetricsAttemptTest, RunsNoEarlierForTheWholeSecondsOfTheFile) {
  PlatformServices late = services();
  late.now = [this] { return now.addingSeconds(0.25); };
  const PlatformServices::Scope lateScope(late);
  attempt();
  EXPECT_EQ(defaults->lastAttempt, PropertyList(now.addingSeconds(1)));
}

TEST_F(MetricsAttemptTest, UsesTheDayUpWhenACardIsMissing) {
  EXPECT_EQ(attempt(),
            (Events{"willReportAnalytics", "begin", "noMeCard", "didReportAnalytics", "end"}));
  EXPECT_EQ(agent->takeCalls(), "");
  EXPECT_EQ(defaults->lastAttempt, PropertyList(now));
  defaults->lastAttempt.reset();
  defaults->failure = makePosixError(ENOSPC, "write");
  haveCardWithName();
  agent->error = makeError(DonationErrorDomain, 1);
  testing::internal::CaptureStderr();
  EXPECT_EQ(attempt().at(2), "noDonatedMeCard");
  EXPECT_THAT(testing::internal::GetCapturedStderr(), testing::StartsWith("quenlet: last-metrics"));
}

template <typename T>
std::string sorted(const std::vector<T>& curated, const std::vector<T>& donated) {
  AugmentationBucket<T> bucket;
  for (const T& value : curated) bucket.addCurated(value);
  for (const T& value : donated) bucket.addDonated(value);
  const std::string text = bucket.description();
  return text.substr(text.find("common="));
}

TEST(AugmentationBucketTest, TellsWhatIsOnBothCardsAndWhatWasOnlyDonated) {
  using Texts = std::vector<std::string>;
  const auto number = [](const char* text) { return *PhoneNumber::withStringValue(text); };
  EXPECT_EQ(sorted(Texts{"\u00e9@x", "a@x", "a@x"}, Texts{"e\u0301@x", "A@x"}),
            "common=(e\u0301@x) uniqueToCurated=(a@x) uniqueToDonated=(A@x)");
  EXPECT_EQ(sorted(Texts{"a@x"}, Texts{"a@x", "a@x", "c@x", "b@x", "c@x"}),
            "common=(a@x) uniqueToCurated=() uniqueToDonated=(c@x, b@x)");
  EXPECT_EQ(sorted<PhoneNumber>({number("+49 30 2312500")},
                                {number("030 2312500"), number("0049302312500"), number("112")}),
            "common=(030 2312500) uniqueToCurated=() uniqueToDonated=(112)");
  EXPECT_EQ(sorted<PostalAddress>({{.city = "Ulm"}}, {{.street = "Ulm"}, {.city = "Ulm"}}),
            "common=(Ulm) uniqueToCurated=() uniqueToDonated=(Ulm)");
}

// The rule as it reads, with every list searched from its start.
template <typename T>
void compareWithPlainScan(const std::vector<T>& pool, std::mt19937& random) {
  AugmentationBucket<T> bucket;
  std::vector<T> curated, donated, common;
  const auto list = [](const auto& values) { return std::vector<T>(values.begin(), values.end()); };
  for (int i = 0; i < 24; ++i) {
    const T& value = pool[random() % pool.size()];
    const auto in = [&](std::vector<T>& listed) {
      return std::find_if(listed.begin(), listed.end(), [&](const T& other) {
        if constexpr (std::is_same_v<T, PhoneNumber>) return value.isLikePhoneNumber(other);
        if constexpr (std::is_same_v<T, std::string>) return canonicallyEqual(value, other);
        return value == other;
      });
    };
    const bool isCurated = random() % 2 == 0;
    isCurated ? bucket.addCurated(value) : bucket.addDonated(value);
    const auto [own, other] = isCurated ? std::tie(curated, donated) : std::tie(donated, curated);
    if (in(common) == common.end()) {
      if (const auto found = in(other); found != other.end()) {
        other.erase(found);
        common.push_back(value);
      } else if (in(own) == own.end()) {
        own.push_back(value);
      }
    }
    ASSERT_EQ(list(bucket.uniqueToCurated()), curated);
    ASSERT_EQ(list(bucket.uniqueToDonated()), donated);
    ASSERT_EQ(list(bucket.common()), common);
  }
}

TEST(AugmentationBucketTest, SortsAsAPlainScanDoes) {
  std::mt19937 random(1);
  const auto number = [](const char* text) { return *PhoneNumber::withStringValue(text); };
  // Likeness is not transitive: the numbers of two areas are like the one without an area.
  const std::vector<PhoneNumber> numbers = {number("+1 202 555 0143"),    number("202 555 0143"),
                                            number("555 0143"),           number("+1 212 555 0143"),
                                            number("+1 202 555 0143 x1"), number("50143")};
  const std::vector<PostalAddress> addresses = {
      {.street = "a", .city = "b"}, {.street = "ab"},    {.city = "ab"},
      {.city = "\u00e9"},           {.city = "e\u0301"}, {}};
  for (int round = 0; round < 200; ++round) {
    compareWithPlainScan<std::string>({"a@x", "A@x", "\u00e9@x", "e\u0301@x", ""}, random);
    compareWithPlainScan(numbers, random);
    compareWithPlainScan(addresses, random);
  }
}

}  // namespace
}  // namespace quenlet
