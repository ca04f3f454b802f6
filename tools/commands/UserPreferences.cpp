#include "tools/commands/UserPreferences.h"

#include "platform/files/PosixDataProxy.h"
#include "platform/files/UserDirectories.h"
#include "platform/notifications/SocketNotificationCenter.h"
#include "platform/preferences/PropertyListDonationPreferences.h"
#include "platform/preferences/UserDefaults.h"

namespace quenlet {

Result<std::unique_ptr<UserPreferences>> UserPreferences::open() {
  using Opened = Result<std::unique_ptr<UserPreferences>>;
  const auto home = UserDirectories::homeDirectory();
  if (!home.isLeft()) return Opened::right(home.right());
  const auto runtime = UserDirectories::runtimeDirectory();
  if (!runtime.isLeft()) return Opened::right(runtime.right());
  return Opened::left(
      std::unique_ptr<UserPreferences>(new UserPreferences(home.left(), runtime.left())));
}

UserPreferences::UserPreferences(const std::filesystem::path& home,
                                 const std::filesystem::path& runtime)
    : donationPreferences(std::make_shared<PropertyListDonationPreferences>(
          home / PreferencesPath, std::make_shared<PosixDataProxy>(), eventLoop,
          std::make_shared<SocketNotificationCenter>(eventLoop,
                                                     runtime / "quenlet/notifications"))) {}

}  // namespace quenlet
