#include "tools/owner/AppPermissions.h"

#include <cerrno>
#include <optional>
#include <utility>

#include "bus/BusError.h"

namespace quenlet {
namespace {

ErrorPtr lacking(AppPermissionsLack lack, const std::string& sentence) {
  return makeError(AppPermissionsErrorDomain, static_cast<std::int64_t>(lack), sentence);
}

// Null for a bus that has ended.
ErrorPtr withoutBus(const ErrorPtr& error) {
  const auto code = error ? error->code() : ECONNRESET;
  const bool isNone = code == ENOMEDIUM || code == ENOENT || code == ECONNREFUSED;
  return lacking(AppPermissionsLack::bus, isNone ? "there is no message bus of a session here"
                                                 : "the message bus of the session does not let "
                                                   "the command in");
}

ErrorPtr explained(const ErrorPtr& error) {
  if (!error || !isAbsence(*error)) return error;
  return lacking(AppPermissionsLack::store, "the desktop has no store of what apps may do");
}

}  // namespace

Result<std::unique_ptr<AppPermissions>> AppPermissions::open() {
  using Opened = Result<std::unique_ptr<AppPermissions>>;
  std::unique_ptr<AppPermissions> opened(new AppPermissions);
  auto bus = BusConnection::toUserBus(opened->loop);
  if (!bus.ok()) return Opened::failure(withoutBus(bus.error()));
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
  if (!read) return All::failure(withoutBus(lost));
  return read->ok() ? *std::move(read) : All::failure(explained(read->error()));
}

ErrorPtr AppPermissions::set(AppWish wish, const std::string& app,
                             const AppPermission& permission) {
  std::optional<ErrorPtr> outcome;
  PermissionStore(*bus).set(wish, app, permission, [this, &outcome](ErrorPtr error) {
    outcome = std::move(error);
    loop.stop();
  });
  const ErrorPtr lost = loop.run();
  return outcome ? explained(*outcome) : withoutBus(lost);
}

}  // namespace quenlet
