#include "foreign/UserPlaces.h"

#include "platform/files/UserDirectories.h"

namespace quenlet {

Result<UserPlaces> UserPlaces::ofProcess() {
  const auto home = UserDirectories::homeDirectory();
  if (!home.ok()) return Result<UserPlaces>::failure(home.error());
  const auto chosen = UserDirectories::chosenConfigurationDirectory();
  return Result<UserPlaces>::success(
      {home.value(), chosen.value_or(home.value() / UserDirectories::defaultConfiguration)});
}

}  // namespace quenlet
