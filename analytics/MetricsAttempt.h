#pragma once

#include <memory>
#include <utility>

#include "platform/scheduling/ProcessTransaction.h"
#include "protocol/CorvelProtocol.h"

namespace quenlet {

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
