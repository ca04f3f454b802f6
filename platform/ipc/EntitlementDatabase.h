#pragma once

#include <filesystem>
#include <map>
#include <optional>
#include <string>

#include "platform/foundation/PropertyList.h"

namespace quenlet {

class TrustedDirectory;

// What programs are entitled to, from the property-list files in
// <prefix>/share/quenlet/entitlements. Each maps executable paths, absolute or relative to the
// prefix, to a dictionary of entitlement and value; of two values for the same one, that of the
// later file by name counts. Immutable once made: a change of the files needs a new one.
//
// The prefix, each directory down to the last, and each file must belong to root or to the own user
// and be writable for the owner only; what is not, or does not parse, is left out with a line on
// standard error. What lies above the prefix is up to whoever chose it.
class EntitlementDatabase final {
 public:
  // A prefix with no such directory entitles nobody.
  explicit EntitlementDatabase(const std::filesystem::path& prefix);

  // The directory above the one that holds the running program. Empty when that cannot be told.
  [[nodiscard]] static std::filesystem::path prefixOfRunningProgram();

  [[nodiscard]] std::optional<PropertyList> value(const std::filesystem::path& executable,
                                                  const std::string& entitlement) const;

 private:
  void addFile(const TrustedDirectory& directory, const std::string& name,
               const std::filesystem::path& prefix);

  std::map<std::string, PropertyListDictionary, std::less<>> entitlementsByExecutable;
};

}  // namespace quenlet
