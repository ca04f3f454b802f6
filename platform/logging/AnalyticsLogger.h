#pragma once

#include "quenlet/Date.h"

namespace quenlet {

// The structured event log of the daily report. Thread-safe; logging never fails.
class AnalyticsLogger {
 public:
  virtual ~AnalyticsLogger() = default;
  virtual void willReportAnalytics() = 0;
  virtual void withinReportingInterval(Date lastAttempt) = 0;
  virtual void noMeCard() = 0;
  virtual void noDonatedMeCard() = 0;
  virtual void didReportAnalytics() = 0;
};

}  // namespace quenlet
