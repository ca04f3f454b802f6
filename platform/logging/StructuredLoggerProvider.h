#pragma once

#include <memory>

#include "platform/logging/DonationLoggerProvider.h"
#include "platform/logging/StructuredAccountLogger.h"
#include "platform/logging/StructuredAgentLogger.h"
#include "platform/logging/StructuredAnalyticsLogger.h"

namespace quenlet {

// Loggers that write to one sink. Thread-safe.
class StructuredLoggerProvider final : public DonationLoggerProvider {
 public:
  explicit StructuredLoggerProvider(const StructuredLog& log)
      : ofAgent(std::make_shared<StructuredAgentLogger>(log)),
        ofAnalytics(std::make_shared<StructuredAnalyticsLogger>(log)),
        ofAccounts(std::make_shared<StructuredAccountLogger>(log)) {}

  std::shared_ptr<AgentLogger> agentLogger() override { return ofAgent; }
  std::shared_ptr<AnalyticsLogger> analyticsLogger() override { return ofAnalytics; }
  std::shared_ptr<AccountLogger> accountLogger() override { return ofAccounts; }

 private:
  const std::shared_ptr<AgentLogger> ofAgent;
  const std::shared_ptr<AnalyticsLogger> ofAnalytics;
  const std::shared_ptr<AccountLogger> ofAccounts;
};

}  // namespace quenlet
