#pragma once

#include <memory>

#include "platform/logging/AccountLogger.h"
#include "platform/logging/AgentLogger.h"
#include "platform/logging/AnalyticsLogger.h"

namespace quenlet {

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
