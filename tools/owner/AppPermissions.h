#pragma once

#include <memory>
#include <string>

#include "apps/PermissionStore.h"

namespace quenlet {

// What the owner allows sandboxed apps, in the desktop's permission store. One operation each: it
// waits for the store, five seconds at most. One thread.
class AppPermissions final {
 public:
  // An error when there is no bus of the user's.
  [[nodiscard]] static Result<std::unique_ptr<AppPermissions>> open();

  [[nodiscard]] Result<PermissionStore::All> list(AppWish wish);
  [[nodiscard]] ErrorPtr set(AppWish wish, const std::string& app, const AppPermission& permission);

  // Whether the error says that there is no bus, or no store on it: then no app is allowed
  // anything.
  [[nodiscard]] static bool saysNoStore(const Error& error);

 private:
  AppPermissions() = default;

  BusLoop loop;
  std::unique_ptr<BusConnection> bus;
};

}  // namespace quenlet
