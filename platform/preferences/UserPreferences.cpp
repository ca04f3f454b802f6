#include "platform/preferences/UserPreferences.h"

#include "platform/files/PosixDataProxy.h"
#include "platform/files/UserDirectories.h"
#include "platform/notifications/NotificationDirectory.h"
#include "platform/notifications/SocketNotificationCenter.h"
#include "platform/preferences/PropertyListDonationPreferences.h"
#include "platform/preferences/UserDefaults.h"

namespace quenlet {

Result<std::unique_ptr<UserPreferences>> UserPreferences::open() {
  using Opened = Result<std::unique_ptr<UserPreferences>>;
  const auto home = UserDirectories::homeDirectory();
  if (!home.ok()) return Opened::failure(home.error());
  const auto runtime = UserDirectories::runtimeDirectory();
  if (!runtime.ok()) return Opened::failure(runtime.error());
  return Opened::success(
      std::unique_ptr<UserPreferences>(new UserPreferences(home.value(), runtime.value())));
}

UserPreferences::UserPreferences(const std::filesystem::path& home,
                                 const std::filesystem::path& runtime)
    : donationPreferences(std::make_shared<PropertyListDonationPreferences>(
          home / PreferencesPath, std::make_shared<PosixDataProxy>(), eventLoop,
          std::make_shared<SocketNotificationCenter>(eventLoop,
                                                     NotificationDirectory::below(runtime)))) {}

}  // namespace quenlet
