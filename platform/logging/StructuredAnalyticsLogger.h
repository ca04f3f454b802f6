#pragma once

#include "platform/logging/AnalyticsLogger.h"
#include "platform/logging/StructuredLog.h"

namespace quenlet {

// Writes the daily report's events to a structured log, each under its full keyword name.
// Thread-safe.
class StructuredAnalyticsLogger final : public AnalyticsLogger {
 public:
  explicit StructuredAnalyticsLogger(StructuredLog structuredLog) : log(std::move(structuredLog)) {}

  void willReportAnalytics() override { log.record("willReportAnalytics"); }
  void withinReportingInterval(Date lastAttempt) override {
    log.record("withinReportingInterval:", {lastAttempt});
  }
  void noMeCard() override { log.record("noMeCard"); }
  void noDonatedMeCard() override { log.record("noDonatedMeCard"); }
  void didReportAnalytics() override { log.record("didReportAnalytics"); }

 private:
  const StructuredLog log;
};

}  // namespace quenlet
