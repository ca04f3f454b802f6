#include "analytics/MetricsAttempt.h"

#include <cmath>
#include <optional>
#include <utility>

#include "analytics/AugmentationClassifier.h"
#include "analytics/MeCardClassifier.h"
#include "platform/PlatformServices.h"
#include "platform/foundation/ProblemReporter.h"

namespace quenlet {
namespace {

// Reports the fields of an existing card to the standard reporter. Stateless, thread-safe.
class MeCardReporter final {
 public:
  void report(MeCardFields fields) const;
};

void MeCardReporter::report(MeCardFields fields) const {
  AnalyticsReporting& reporter = *AnalyticsReporting::standardReporter();
  reporter.reportNumberOfMeCards(1);
  reporter.reportHasNameComponents(
      fields.contains(MeCardFields::nameComponents), fields.contains(MeCardFields::emailAddresses),
      fields.contains(MeCardFields::phoneNumbers), fields.contains(MeCardFields::postalAddresses));
}

constexpr char transactionName[] = "ovaro.quenlet-agent.metrics";

std::shared_ptr<AnalyticsLogger> analyticsLogger() {
  return PlatformServices::current().defaultLoggerProvider()->analyticsLogger();
}

std::optional<Date> dateOfLastAttempt() {
  const auto object =
      PlatformServices::current().userDefaults()->objectForKey(LastMetricsAttemptKey);
  const Date* date = object ? object->date() : nullptr;
  return date ? std::optional(*date) : std::nullopt;
}

void writeDateOfAttempt(Date now) {
  // Files keep whole seconds: rounded down, the day would end up to a second early.
  const Date date(std::ceil(now.secondsSince1970()));
  // An attempt whose date cannot be written is made all the same, and again at the next launch.
  ProblemReporter(LastMetricsAttemptKey)
      .setProblem(
          PlatformServices::current().userDefaults()->setObject(date, LastMetricsAttemptKey));
}

ContactPtr fetchCuratedCard() {
  const auto fetched =
      PlatformServices::current().makeContactStore()->_crossPlatformUnifiedMeContactWithKeysToFetch(
          MeCardClassifier::descriptors());
  return fetched.ok() ? fetched.value() : nullptr;
}

}  // namespace

void MetricsAttempt::runMetricsAttempt(const std::shared_ptr<CorvelProtocol>& agent) {
  const auto logger = analyticsLogger();
  logger->willReportAnalytics();
  const std::optional<Date> last = dateOfLastAttempt();
  const Date now = PlatformServices::current().now();
  if (last && now.timeIntervalSince(*last) <= intervalSeconds) {
    logger->withinReportingInterval(*last);
    logger->didReportAnalytics();
    return;
  }
  auto transaction = PlatformServices::current().makeProcessTransaction(transactionName);
  writeDateOfAttempt(now);
  ContactPtr curated = fetchCuratedCard();
  const MeCardStatus status = MeCardClassifier().classifyMeCard(curated.get());
  if (!status.fields()) {
    logger->noMeCard();
    logger->didReportAnalytics();
    return;
  }
  MeCardReporter().report(*status.fields());
  const std::shared_ptr<MetricsAttempt> attempt(
      new MetricsAttempt(std::move(curated), std::move(transaction)));
  agent->fetchDonatedMeCard(
      [attempt](const ContactPtr& donated, const ErrorPtr&) { attempt->didFetch(donated); });
}

void MetricsAttempt::didFetch(const ContactPtr& donated) {
  const auto logger = analyticsLogger();
  if (donated) {
    AugmentationClassifier classifier(curated, donated);
    AnalyticsReporting::standardReporter()->reportAugmentationStatus(classifier.analyze());
  } else {
    logger->noDonatedMeCard();
  }
  logger->didReportAnalytics();
  // Released here, however long the agent keeps its handler.
  transaction.reset();
}

}  // namespace quenlet
