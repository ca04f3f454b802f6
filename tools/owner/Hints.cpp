#include "tools/owner/Hints.h"

#include <filesystem>
#include <system_error>

#include "platform/ipc/ServiceInterface.h"
#include "platform/preferences/UserPreferences.h"
#include "protocol/ClientEntitlements.h"
#include "quenlet/ErrorCodes.h"
#include "tools/owner/AppPermissions.h"

namespace quenlet {
namespace {

Advices hintsForService(ServiceErrorCode code) {
  switch (code) {
    case ServiceErrorCode::noService:
      return {Advice::command("no agent runs; start it: systemctl --user start quenlet-agent")};
    case ServiceErrorCode::connectionBroken:
      return {Advice::command("the agent may have ended: systemctl --user status quenlet-agent")};
    case ServiceErrorCode::timedOut:
      return {"the agent hangs or is very busy; start it anew:",
              Advice::command("systemctl --user restart quenlet-agent")};
    case ServiceErrorCode::bundleNotAllowed:
      return {"quenlet clients shows which program may donate as whom"};
    default:
      return {};
  }
}

// The agent needs a moment after its start to read the preference, and refuses meanwhile.
Advices hintsForRefusal() {
  const auto user = UserPreferences::open();
  const bool isOff = user.ok() && !user.value()->preferences().isDonationsEnabled();
  return {isOff ? "donations are off; turn them on: quenlet enable"
                : "donations are on, and the agent is about to notice; try again"};
}

Advices hintsForEntitlement() {
  std::error_code failure;
  const auto program = std::filesystem::read_symlink("/proc/self/exe", failure);
  const std::string file = "/etc/quenlet/entitlements/" + program.filename().native() + ".plist";
  return {"the agent looked for the program " + program.native(),
          file + " can entitle it, if root wrote it",
          "quenlet clients shows which programs are entitled, and what is not trusted"};
}

Advices hintsForLack(AppPermissionsLack lack) {
  if (lack == AppPermissionsLack::store) {
    return {"install xdg-desktop-portal, which has the store"};
  }
  return {"call it within your session; elsewhere, DBUS_SESSION_BUS_ADDRESS names the bus"};
}

}  // namespace

bool isNotEnabled(const Error& error) {
  return error.domain() == DonationErrorDomain &&
         error.code() == static_cast<std::int64_t>(DonationErrorCode::featureNotEnabled);
}

Advices hintsFor(const Error& error) {
  if (error.domain() == ServiceErrorDomain) {
    return hintsForService(static_cast<ServiceErrorCode>(error.code()));
  }
  if (isNotEnabled(error)) return hintsForRefusal();
  if (error.domain() == GeneralErrorDomain && error.code() == MissingEntitlementCode) {
    return hintsForEntitlement();
  }
  if (error.domain() == AppPermissionsErrorDomain) {
    return hintsForLack(static_cast<AppPermissionsLack>(error.code()));
  }
  return {};
}

}  // namespace quenlet
