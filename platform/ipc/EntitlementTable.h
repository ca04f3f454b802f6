#pragma once

#include <filesystem>
#include <map>
#include <memory>
#include <string>

#include "platform/foundation/Error.h"
#include "platform/foundation/PropertyList.h"

namespace quenlet {

class TrustedDirectory;

// What programs are entitled to, from property-list files as they were at one moment. Each maps
// executable paths, absolute or relative to a prefix, to a dictionary of entitlement and value; of
// two values for the same one, that of the file read later counts. Immutable once it is filled.
//
// The directories, from the base down, and each file must belong to root or to the own user and be
// writable for the owner only, and a file must not be a link; what is not so, or does not parse, is
// left out with a line on standard error. What lies above the base is up to whoever chose it.
class EntitlementTable final {
 public:
  // Adds the files of `base`/`below` whose names end in ".plist", by their names, if there is such
  // a directory.
  void addDirectory(const std::filesystem::path& base, const std::filesystem::path& below,
                    const std::filesystem::path& prefix);

  // The entitlements of a program; null when it has none.
  [[nodiscard]] std::shared_ptr<const PropertyListDictionary> entitlementsOf(
      const std::filesystem::path& executable) const;
  // Whether something was left out because the system was short of memory or descriptors, or a disk
  // failed, which says nothing about the files.
  [[nodiscard]] bool isIncomplete() const { return incomplete; }

 private:
  void addFile(const TrustedDirectory& directory, const std::string& name,
               const std::filesystem::path& prefix);
  void leaveOut(const std::filesystem::path& path, const Error& error);

  std::map<std::string, std::shared_ptr<PropertyListDictionary>, std::less<>>
      entitlementsByExecutable;
  bool incomplete = false;
};

}  // namespace quenlet
