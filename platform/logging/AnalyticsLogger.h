#pragma once

#include <utility>

#include "platform/logging/StructuredLog.h"
#include "quenlet/Date.h"

namespace quenlet {

// Writes the daily report's events to a structured log, each under its full keyword name.
// Thread-safe.
class AnalyticsLogger final {
 public:
  explicit AnalyticsLogger(StructuredLog structuredLog) : log(std::move(structuredLog)) {}

  void willReportAnalytics() { log.record("willReportAnalytics"); }
  void withinReportingInterval(Date lastAttempt) {
    log.record("withinReportingInterval:", {lastAttempt});
  }
  void noMeCard() { log.record("noMeCard"); }
  void noDonatedMeCard() { log.record("noDonatedMeCard"); }
  void didReportAnalytics() { log.record("didReportAnalytics"); }

 private:
  const StructuredLog log;
};

}  // namespace quenlet
