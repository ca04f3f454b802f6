#include "tools/owner/AppPermissions.h"

#include <cerrno>
#include <optional>
#include <utility>

#include "bus/BusError.h"

namespace quenlet {

Result<std::unique_ptr<AppPermissions>> AppPermissions::open() {
  using Opened = Result<std::unique_ptr<AppPermissions>>;
  std::unique_ptr<AppPermissions> opened(new AppPermissions);
  auto bus = BusConnection::toUserBus(opened->loop);
  if (!bus.ok()) return Opened::failure(bus.error());
  opened->bus = std::move(bus).takeValue();
  return Opened::success(std::move(opened));
}

Result<PermissionStore::All> AppPermissions::list(AppWish wish) {
  using All = Result<PermissionStore::All>;
  std::optional<All> read;
  PermissionStore(*bus).list(wish, [this, &read](All all) {
    read = std::move(all);
    loop.stop();
  });
  const ErrorPtr lost = loop.run();
  if (read) return *std::move(read);
  return All::failure(lost ? lost : makePosixError(ECANCELED, "read the permission store"));
}

ErrorPtr AppPermissions::set(AppWish wish, const std::string& app,
                             const AppPermission& permission) {
  std::optional<ErrorPtr> outcome;
  PermissionStore(*bus).set(wish, app, permission, [this, &outcome](ErrorPtr error) {
    outcome = std::move(error);
    loop.stop();
  });
  const ErrorPtr lost = loop.run();
  if (outcome) return *std::move(outcome);
  return lost ? lost : makePosixError(ECANCELED, "write the permission store");
}

bool AppPermissions::saysNoStore(const Error& error) {
  if (isAbsence(error)) return true;
  const auto code = error.code();
  return error.domain() == PosixErrorDomain &&
         (code == ENOENT || code == ECONNREFUSED || code == ENOMEDIUM);
}

}  // namespace quenlet
