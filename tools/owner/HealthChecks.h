#pragma once

#include <string>
#include <vector>

#include "protocol/CorvelProtocol.h"

namespace quenlet {

// What a check found.
struct Finding final {
  bool isWell = true;
  std::string text;
  // What the user can do, a line each; empty when all is well.
  std::vector<std::string> advice = {};
};

// One look at what the agent and its command need. It changes nothing, neither files nor the agent.
struct HealthCheck final {
  const char* name;
  Finding (*look)(CorvelProtocol& agent);
};

// All checks, in the order in which one depends on the other.
[[nodiscard]] const std::vector<HealthCheck>& healthChecks();

}  // namespace quenlet
