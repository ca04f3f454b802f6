#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <utility>

#include "analytics/AugmentationClassifier.h"
#include "platform/scheduling/ProcessTransaction.h"
#include "protocol/CorvelProtocol.h"

namespace quenlet {

// Where the daily report goes. Thread-safe; reporting never fails.
class AnalyticsReporting {
 public:
  virtual ~AnalyticsReporting() = default;

  virtual void reportNumberOfMeCards(std::uint64_t count) = 0;
  // `reportHasNameComponents:hasEmailAddress:hasPhoneNumber:hasPostalAddress:`.
  virtual void reportHasNameComponents(bool hasNameComponents, bool hasEmailAddress,
                                       bool hasPhoneNumber, bool hasPostalAddress) = 0;
  virtual void reportAugmentationStatus(const AugmentationStatus& status) = 0;
  [[nodiscard]] virtual std::string description() const = 0;

  // A new reporter to the system log, then to the counters.
  [[nodiscard]] static std::shared_ptr<AnalyticsReporting> makeStandardReporter();
  // The reporter that the process shares, made at the first call. It keeps the system log of the
  // platform services current at that call, and counts in the counters current at each report.
  [[nodiscard]] static const std::shared_ptr<AnalyticsReporting>& standardReporter();
};

// One daily report: what the curated card has, and how much the donated one adds to it. Lives until
// the agent has answered; from its decision to report until then, an orderly exit waits for it.
//
//   last attempt at most a day ago, or in the future → withinReportingInterval:
//   no curated card                                   → noMeCard
//   no donated card                                   → the card's fields, noDonatedMeCard
//   else                                              → the card's fields, the augmentation
//
// Each begins with willReportAnalytics and ends with one didReportAnalytics. The date of the
// attempt is written before anything is fetched, so that a failing one is not repeated all day.
class MetricsAttempt final {
 public:
  static constexpr double intervalSeconds = 86400.0;

  // Makes one attempt with the current platform services. Waits for files: call it on the global
  // asynchronous scheduler. The rest runs where the agent answers.
  static void runMetricsAttempt(const std::shared_ptr<CorvelProtocol>& agent);

 private:
  explicit MetricsAttempt(ContactPtr curatedCard, std::shared_ptr<ProcessTransaction> held)
      : curated(std::move(curatedCard)), transaction(std::move(held)) {}
  void didFetch(const ContactPtr& donated);

  const ContactPtr curated;
  std::shared_ptr<ProcessTransaction> transaction;
};

}  // namespace quenlet
