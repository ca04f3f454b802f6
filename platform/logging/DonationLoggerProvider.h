#pragma once

#include <memory>

#include "platform/logging/AgentLogger.h"

namespace quenlet {

// Where the structured loggers come from. The default provider is the platform's (see
// PlatformServices). Thread-safe.
class DonationLoggerProvider {
 public:
  virtual ~DonationLoggerProvider() = default;
  [[nodiscard]] virtual std::shared_ptr<AgentLogger> agentLogger() = 0;
};

}  // namespace quenlet
