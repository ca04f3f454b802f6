#include "tools/owner/AllowedApps.h"

#include <map>
#include <utility>

#include "tools/owner/AppPermissions.h"

namespace quenlet {
namespace {

Result<PermissionStore::All> permissionsFor(AppWish wish) {
  const auto opened = AppPermissions::open();
  if (!opened.ok()) return Result<PermissionStore::All>::failure(opened.error());
  return opened.value()->list(wish);
}

}  // namespace

Result<std::vector<AllowedApp>> readAllowedApps() {
  using Apps = Result<std::vector<AllowedApp>>;
  std::map<std::string, AllowedApp> found;
  for (const AppWish wish : {AppWish::meCard, AppWish::donate}) {
    const auto all = permissionsFor(wish);
    if (!all.ok()) return Apps::failure(all.error());
    for (const auto& [identifier, permission] : all.value()) {
      AllowedApp& app = found[identifier];
      app.identifier = identifier;
      (wish == AppWish::meCard ? app.card : app.donations) = permission;
    }
  }
  std::vector<AllowedApp> apps;
  apps.reserve(found.size());
  for (auto& entry : found) apps.push_back(std::move(entry.second));
  return Apps::success(std::move(apps));
}

}  // namespace quenlet
