#include "analytics/MetricsAttempt.h"

#include <initializer_list>
#include <memory>
#include <string>
#include <vector>

#include "analytics/DescriptionBuilder.h"
#include "platform/PlatformServices.h"
#include "platform/counters/CounterStore.h"
#include "platform/logging/SystemLog.h"

namespace quenlet {
namespace {

// Passes every report on to several reporters, in their order. Immutable, thread-safe.
class AggregateAnalyticsReporter final : public AnalyticsReporting {
 public:
  using Reporters = std::vector<std::shared_ptr<AnalyticsReporting>>;

  // Without reporters it drops what it is told.
  explicit AggregateAnalyticsReporter(Reporters all = {}) : allReporters(std::move(all)) {}

  [[nodiscard]] const Reporters& reporters() const { return allReporters; }

  void reportNumberOfMeCards(std::uint64_t count) override;
  void reportHasNameComponents(bool hasNameComponents, bool hasEmailAddress, bool hasPhoneNumber,
                               bool hasPostalAddress) override;
  void reportAugmentationStatus(const AugmentationStatus& status) override;
  [[nodiscard]] std::string description() const override;

 private:
  const Reporters allReporters;
};

void AggregateAnalyticsReporter::reportNumberOfMeCards(std::uint64_t count) {
  for (const auto& reporter : allReporters) reporter->reportNumberOfMeCards(count);
}

void AggregateAnalyticsReporter::reportHasNameComponents(bool hasNameComponents,
                                                         bool hasEmailAddress, bool hasPhoneNumber,
                                                         bool hasPostalAddress) {
  for (const auto& reporter : allReporters) {
    reporter->reportHasNameComponents(hasNameComponents, hasEmailAddress, hasPhoneNumber,
                                      hasPostalAddress);
  }
}

void AggregateAnalyticsReporter::reportAugmentationStatus(const AugmentationStatus& status) {
  for (const auto& reporter : allReporters) reporter->reportAugmentationStatus(status);
}

std::string AggregateAnalyticsReporter::description() const {
  std::string all = "(";
  for (const auto& reporter : allReporters) {
    all.append(all.size() > 1 ? ", " : "").append(reporter->description());
  }
  return DescriptionBuilder("AggregateAnalyticsReporter").append("reporters", all + ")").build();
}

// Counts reports in the platform's counter store. Stateless, thread-safe.
class CounterAnalyticsReporter final : public AnalyticsReporting {
 public:
  void reportNumberOfMeCards(std::uint64_t count) override;
  void reportHasNameComponents(bool hasNameComponents, bool hasEmailAddress, bool hasPhoneNumber,
                               bool hasPostalAddress) override;
  void reportAugmentationStatus(const AugmentationStatus& status) override;
  // `reportNumberOfMatchedEmailAddresses:numberOfUnmatchedEmailAddresses:…`.
  void reportNumberOfMatchedEmailAddresses(std::uint64_t matchedEmailAddresses,
                                           std::uint64_t numberOfUnmatchedEmailAddresses,
                                           std::uint64_t numberOfMatchedPhoneNumbers,
                                           std::uint64_t numberOfUnmatchedPhoneNumbers,
                                           std::uint64_t numberOfMatchedPostalAddresses,
                                           std::uint64_t numberOfUnmatchedPostalAddresses);
  [[nodiscard]] std::string description() const override;
};

void CounterAnalyticsReporter::reportNumberOfMeCards(std::uint64_t count) {
  PlatformServices::current().counterStore()->setScalar(CounterKeys::meCardCount,
                                                        static_cast<std::int64_t>(count));
}

void CounterAnalyticsReporter::reportHasNameComponents(bool hasNameComponents, bool hasEmailAddress,
                                                       bool hasPhoneNumber, bool hasPostalAddress) {
  const auto store = PlatformServices::current().counterStore();
  store->setScalar(CounterKeys::hasName, hasNameComponents ? 1 : 0);
  store->setScalar(CounterKeys::hasEmailAddress, hasEmailAddress ? 1 : 0);
  store->setScalar(CounterKeys::hasPhoneNumber, hasPhoneNumber ? 1 : 0);
  store->setScalar(CounterKeys::hasPostalAddress, hasPostalAddress ? 1 : 0);
}

void CounterAnalyticsReporter::reportAugmentationStatus(const AugmentationStatus& status) {
  reportNumberOfMatchedEmailAddresses(
      status.matchedEmailAddressCount(), status.unmatchedEmailAddressCount(),
      status.matchedPhoneNumberCount(), status.unmatchedPhoneNumberCount(),
      status.matchedPostalAddressCount(), status.unmatchedPostalAddressCount());
}

void CounterAnalyticsReporter::reportNumberOfMatchedEmailAddresses(
    std::uint64_t matchedEmailAddresses, std::uint64_t numberOfUnmatchedEmailAddresses,
    std::uint64_t numberOfMatchedPhoneNumbers, std::uint64_t numberOfUnmatchedPhoneNumbers,
    std::uint64_t numberOfMatchedPostalAddresses, std::uint64_t numberOfUnmatchedPostalAddresses) {
  const auto store = PlatformServices::current().counterStore();
  const auto add = [&store](const char* key, std::uint64_t count) {
    store->addSample(key, static_cast<double>(count));
  };
  add(CounterKeys::matchedEmailAddresses, matchedEmailAddresses);
  add(CounterKeys::unmatchedEmailAddresses, numberOfUnmatchedEmailAddresses);
  add(CounterKeys::matchedPhoneNumbers, numberOfMatchedPhoneNumbers);
  add(CounterKeys::unmatchedPhoneNumbers, numberOfUnmatchedPhoneNumbers);
  add(CounterKeys::matchedPostalAddresses, numberOfMatchedPostalAddresses);
  add(CounterKeys::unmatchedPostalAddresses, numberOfUnmatchedPostalAddresses);
}

std::string CounterAnalyticsReporter::description() const {
  return DescriptionBuilder("CounterAnalyticsReporter").build();
}

std::string lineOfField(bool has, const std::string& field) {
  return "The me card " + std::string(has ? "has " : "does not have ") + field;
}

// `kind` is padded with blanks, so that the colons of all kinds line up.
std::string lineOfCounts(const std::string& kind, std::uint64_t matched, std::uint64_t unmatched) {
  return "Number of donated " + kind + ": " + std::to_string(matched + unmatched) + " (" +
         std::to_string(matched) + " matched, " + std::to_string(unmatched) + " unmatched)";
}

// Writes reports to the system log as lines for people, under subsystem "ovaro.quenlet" and
// category "analytics". Lines hold numbers, never values. Immutable, thread-safe.
class LogAnalyticsReporter final : public AnalyticsReporting {
 public:
  // Opens the log of the current platform services.
  LogAnalyticsReporter();

  void reportNumberOfMeCards(std::uint64_t count) override;
  void reportHasNameComponents(bool hasNameComponents, bool hasEmailAddress, bool hasPhoneNumber,
                               bool hasPostalAddress) override;
  void reportAugmentationStatus(const AugmentationStatus& status) override;
  [[nodiscard]] std::string description() const override;

 private:
  void writeLines(std::initializer_list<std::string> lines) const;

  const std::shared_ptr<SystemLog> log_t;
};

LogAnalyticsReporter::LogAnalyticsReporter()
    : log_t(PlatformServices::current().makeSystemLog("ovaro.quenlet", "analytics")) {}

void LogAnalyticsReporter::writeLines(std::initializer_list<std::string> lines) const {
  for (const std::string& line : lines) {
    if (log_t->isDefaultLevelEnabled()) log_t->write(line);
  }
}

void LogAnalyticsReporter::reportNumberOfMeCards(std::uint64_t count) {
  writeLines({"User has " + std::to_string(count) + " me cards"});
}

void LogAnalyticsReporter::reportHasNameComponents(bool hasNameComponents, bool hasEmailAddress,
                                                   bool hasPhoneNumber, bool hasPostalAddress) {
  writeLines({lineOfField(hasNameComponents, "name components"),
              lineOfField(hasEmailAddress, "email addresses"),
              lineOfField(hasPhoneNumber, "phone numbers"),
              lineOfField(hasPostalAddress, "postal addresses")});
}

void LogAnalyticsReporter::reportAugmentationStatus(const AugmentationStatus& status) {
  writeLines({lineOfCounts("email addresses ", status.matchedEmailAddressCount(),
                           status.unmatchedEmailAddressCount()),
              lineOfCounts("phone numbers   ", status.matchedPhoneNumberCount(),
                           status.unmatchedPhoneNumberCount()),
              lineOfCounts("postal addresses", status.matchedPostalAddressCount(),
                           status.unmatchedPostalAddressCount())});
}

std::string LogAnalyticsReporter::description() const {
  return DescriptionBuilder("LogAnalyticsReporter").build();
}

}  // namespace

std::shared_ptr<AnalyticsReporting> AnalyticsReporting::makeStandardReporter() {
  return std::make_shared<AggregateAnalyticsReporter>(AggregateAnalyticsReporter::Reporters{
      std::make_shared<LogAnalyticsReporter>(), std::make_shared<CounterAnalyticsReporter>()});
}

const std::shared_ptr<AnalyticsReporting>& AnalyticsReporting::standardReporter() {
  // Kept to the end of the process: some thread may report until then.
  static const auto& reporter = *new std::shared_ptr<AnalyticsReporting>(makeStandardReporter());
  return reporter;
}

}  // namespace quenlet
