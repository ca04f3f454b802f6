#include "foreign/MozillaProfiles.h"

#include <algorithm>
#include <cerrno>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>

#include "foreign/ForeignFiles.h"
#include "foreign/KeyFile.h"

namespace quenlet {
namespace {

constexpr char profilesFile[] = "profiles.ini";

ErrorPtr brokenList(const std::string& sentence) {
  return ForeignFiles::locate(profilesFile, *makeError(PosixErrorDomain, EINVAL, sentence));
}

constexpr std::string_view groupOfProfile = "Profile";

bool isMissing(const std::filesystem::path& file) {
  std::error_code failure;
  return std::filesystem::symlink_status(file, failure).type() ==
         std::filesystem::file_type::not_found;
}

// Whether somebody deleted the directory and left it in the list. Where a link leads nowhere, or,
// outside `root`, the directory above is missing, too, a disk may be.
bool isDeleted(const std::filesystem::path& profile, const std::filesystem::path& root) {
  if (!isMissing(profile)) return false;
  const bool isBelowRoot =
      std::mismatch(root.begin(), root.end(), profile.begin(), profile.end()).first == root.end();
  std::filesystem::path above = profile.parent_path();
  while (isBelowRoot && isMissing(above)) above = above.parent_path();
  std::error_code failure;
  return std::filesystem::is_directory(above, failure);
}

// "[Profile3]", without what a damaged list may have behind the number.
std::string headingOf(const std::string& group) {
  return "[" + group.substr(0, group.find_first_not_of("0123456789", groupOfProfile.size())) + "]";
}

// What the program always writes has to be there.
ErrorPtr addListed(const KeyFile& file, const std::filesystem::path& root,
                   MozillaProfiles::Paths& profiles) {
  if (!file.hasGroup("General")) return brokenList("it has no group \"General\"");
  for (const std::string& group : file.groups()) {
    if (!group.starts_with(groupOfProfile)) continue;
    const auto path = file.text(group, "Path");
    if (!path || path->empty()) return brokenList(headingOf(group) + " has no path");
    // An absolute path stays what it is.
    const std::filesystem::path profile = (root / *path).lexically_normal();
    std::error_code failure;
    if (std::filesystem::is_directory(profile, failure)) {
      profiles.insert(profile);
    } else if (!isDeleted(profile, root)) {
      return brokenList("the directory of " + headingOf(group) + " is not there");
    }
  }
  return nullptr;
}

ErrorPtr addProfiles(const std::filesystem::path& root, MozillaProfiles::Paths& profiles) {
  const auto text = ForeignFiles::readLines(root / profilesFile);
  if (!text.ok()) return ForeignFiles::locate(profilesFile, *text.error());
  if (!text.value()) return nullptr;
  const Result<KeyFile> file = KeyFile::parse(*text.value());
  if (!file.ok()) return ForeignFiles::locate(profilesFile, *file.error());
  return addListed(file.value(), root, profiles);
}

}  // namespace

Result<MozillaProfiles::Paths> MozillaProfiles::in(
    const std::vector<std::filesystem::path>& roots) {
  Paths profiles;
  for (const std::filesystem::path& root : roots) {
    if (ErrorPtr error = addProfiles(root, profiles)) return Result<Paths>::failure(error);
  }
  return Result<Paths>::success(std::move(profiles));
}

}  // namespace quenlet
