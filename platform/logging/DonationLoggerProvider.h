#pragma once

#include <memory>

#include "platform/logging/AccountLogger.h"
#include "platform/logging/AgentLogger.h"
#include "platform/logging/AnalyticsLogger.h"

namespace quenlet {

// Provides the structured loggers; PlatformServices names the default implementation. Thread-safe.
class DonationLoggerProvider {
 public:
  virtual ~DonationLoggerProvider() = default;
  [[nodiscard]] virtual std::shared_ptr<AgentLogger> agentLogger() = 0;
  [[nodiscard]] virtual std::shared_ptr<AnalyticsLogger> analyticsLogger() = 0;
  [[nodiscard]] virtual std::shared_ptr<AccountLogger> accountLogger() = 0;
};

}  // namespace quenlet
