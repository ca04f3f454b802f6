#pragma once

#include <memory>

#include "platform/logging/DonationLoggerProvider.h"
#include "platform/logging/StructuredAgentLogger.h"

namespace quenlet {

// Loggers that write to one sink. Thread-safe.
class StructuredLoggerProvider final : public DonationLoggerProvider {
 public:
  StructuredLoggerProvider(std::shared_ptr<LogSink> sink, std::function<Date()> now)
      : logger(std::make_shared<StructuredAgentLogger>(
            StructuredLog(std::move(sink), std::move(now)))) {}

  std::shared_ptr<AgentLogger> agentLogger() override { return logger; }

 private:
  std::shared_ptr<AgentLogger> logger;
};

}  // namespace quenlet
