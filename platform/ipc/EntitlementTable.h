#pragma once

#include <filesystem>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "platform/foundation/PropertyList.h"
#include "quenlet/Error.h"

namespace quenlet {

class CanonicalPaths;
class TrustedDirectory;

// A snapshot of the entitlements in property-list files. Each file maps executable paths, absolute
// or relative to a prefix, to a dictionary from entitlement to value; on conflict the file read
// later wins. Immutable once it is filled.
//
// The directories, from the base down, and each file must belong to root or to the own user and be
// writable for the owner only, and a file must not be a link. Others, and files that do not parse,
// are left out. The directories above the base are trusted.
class EntitlementTable final {
 public:
  struct Program final {
    std::shared_ptr<PropertyListDictionary> entitlements =
        std::make_shared<PropertyListDictionary>();
    // The files that name it, in the order in which they were read.
    std::vector<std::filesystem::path> files;
  };
  // A file, directory or entry that was left out.
  struct Ignored final {
    std::filesystem::path path;
    std::string reason;
  };

  // Adds the files of `base`/`below` that end in ".plist", in the order of their names. A missing
  // directory adds none.
  void addDirectory(const std::filesystem::path& base, const std::filesystem::path& below,
                    const std::filesystem::path& prefix);

  // The entitlements of a program; null when it has none.
  [[nodiscard]] std::shared_ptr<const PropertyListDictionary> entitlementsOf(
      const std::filesystem::path& executable) const;
  // Whether a file was left out for a passing reason, such as a lack of memory or descriptors or a
  // disk error, which says nothing about its content.
  [[nodiscard]] bool isIncomplete() const { return incomplete; }
  // By the paths of their executables.
  [[nodiscard]] const std::map<std::string, Program, std::less<>>& all() const { return programs; }
  [[nodiscard]] const std::vector<Ignored>& ignored() const { return leftOut; }

 private:
  void addFile(const TrustedDirectory& directory, const std::string& name,
               const std::filesystem::path& prefix, CanonicalPaths& canonical);
  void leaveOut(const std::filesystem::path& path, const Error& error);

  std::map<std::string, Program, std::less<>> programs;
  std::vector<Ignored> leftOut;
  bool incomplete = false;
};

}  // namespace quenlet
