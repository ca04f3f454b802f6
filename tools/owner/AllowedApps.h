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

// All of them, by their identifiers; none without a permission store. The error is the store's.
[[nodiscard]] Result<std::vector<AllowedApp>> readAllowedApps();

}  // namespace quenlet
