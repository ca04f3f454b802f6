#pragma once

#include <memory>
#include <string>
#include <utility>

#include "model/DonationValue.h"
#include "platform/accounts/Account.h"
#include "platform/logging/AgentLogger.h"
#include "platform/logging/StructuredLog.h"
#include "quenlet/Date.h"
#include "quenlet/Error.h"

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

// Writes account events to a structured log, each under its full keyword name. An account is
// written as its identifier and type. Thread-safe.
class AccountLogger final {
 public:
  explicit AccountLogger(StructuredLog structuredLog) : log(std::move(structuredLog)) {}

  void accountAdded(const AccountPtr& account) {
    log.record("accountAdded:", {account->description()});
  }
  void accountChanged(const AccountPtr& account) {
    log.record("accountChanged:", {account->description()});
  }
  void accountRemoved(const AccountPtr& account) {
    log.record("accountRemoved:", {account->description()});
  }
  void accountsDidNotChange() { log.record("accountsDidNotChange"); }
  void donating(const DonationValuePtr& value) { log.record("donating:", {value}); }
  void removing(const std::string& donationIdentifier) {
    log.record("removing:", {donationIdentifier});
  }
  void donationFailedWithError(const ErrorPtr& error) {
    log.record("donationFailedWithError:", {error});
  }
  void removalFailedWithError(const ErrorPtr& error) {
    log.record("removalFailedWithError:", {error});
  }
  void pluginLoaded() { log.record("pluginLoaded"); }
  void pluginUnloaded() { log.record("pluginUnloaded"); }

 private:
  const StructuredLog log;
};

// The structured loggers, which write to one sink. Immutable; thread-safe.
class DonationLoggerProvider final {
 public:
  explicit DonationLoggerProvider(const StructuredLog& log)
      : ofAgent(std::make_shared<AgentLogger>(log)),
        ofAnalytics(std::make_shared<AnalyticsLogger>(log)),
        ofAccounts(std::make_shared<AccountLogger>(log)) {}

  [[nodiscard]] std::shared_ptr<AgentLogger> agentLogger() const { return ofAgent; }
  [[nodiscard]] std::shared_ptr<AnalyticsLogger> analyticsLogger() const { return ofAnalytics; }
  [[nodiscard]] std::shared_ptr<AccountLogger> accountLogger() const { return ofAccounts; }

 private:
  const std::shared_ptr<AgentLogger> ofAgent;
  const std::shared_ptr<AnalyticsLogger> ofAnalytics;
  const std::shared_ptr<AccountLogger> ofAccounts;
};

}  // namespace quenlet
