#pragma once

#include <string>
#include <vector>

#include "protocol/CorvelProtocol.h"
#include "tools/owner/Advice.h"

namespace quenlet {

// What a check found.
struct Finding final {
  bool isWell = true;
  std::string text;
  // Empty when all is well.
  Advices advice = {};
};

// One look at what the agent and its command need. It changes nothing, neither files nor the agent.
struct HealthCheck final {
  const char* name;
  Finding (*look)(CorvelProtocol& agent);
};

// All checks, in the order in which one depends on the other.
[[nodiscard]] const std::vector<HealthCheck>& healthChecks();

}  // namespace quenlet
