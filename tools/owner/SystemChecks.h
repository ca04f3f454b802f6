#pragma once

#include "tools/owner/HealthChecks.h"

// The checks of what the system gives to the agent.
namespace quenlet {

[[nodiscard]] Finding checkKernel();
[[nodiscard]] Finding checkNotifications();
[[nodiscard]] Finding checkDisk();
[[nodiscard]] Finding checkUnit();

}  // namespace quenlet
