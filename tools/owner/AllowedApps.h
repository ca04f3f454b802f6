#pragma once

#include <string>
#include <vector>

#include "apps/AppPermission.h"
#include "quenlet/Result.h"

namespace quenlet {

// A sandboxed app that the owner was asked about.
struct AllowedApp final {
  std::string identifier;
  AppPermission card;
  AppPermission donations;
};

// All of them, by their identifiers. The error is that of AppPermissions.
[[nodiscard]] Result<std::vector<AllowedApp>> readAllowedApps();

}  // namespace quenlet
