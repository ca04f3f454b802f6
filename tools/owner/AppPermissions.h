#pragma once

#include <memory>
#include <string>

#include "apps/PermissionStore.h"

namespace quenlet {

// The domain of errors for what has to be there; the codes are AppPermissionsLack's.
inline constexpr char AppPermissionsErrorDomain[] = "app-permissions";
enum class AppPermissionsLack { bus = 1, store = 2 };

// What the owner allows sandboxed apps, in the desktop's permission store. One operation each: it
// waits for the store, five seconds at most. One thread.
class AppPermissions final {
 public:
  // An error of the above when there is no bus of the user's, as from the others when it has no
  // store.
  [[nodiscard]] static Result<std::unique_ptr<AppPermissions>> open();

  [[nodiscard]] Result<PermissionStore::All> list(AppWish wish);
  [[nodiscard]] ErrorPtr set(AppWish wish, const std::string& app, const AppPermission& permission);

 private:
  AppPermissions() = default;

  BusLoop loop;
  std::unique_ptr<BusConnection> bus;
};

}  // namespace quenlet
