#include "foreign/MozillaProfiles.h"

#include <cerrno>
#include <string>
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

// What the program always writes has to be there, and each profile, whose disk may be missing.
ErrorPtr addListed(const KeyFile& file, const std::filesystem::path& root,
                   MozillaProfiles::Paths& profiles) {
  if (!file.hasGroup("General")) return brokenList("it has no group \"General\"");
  for (const std::string& group : file.groups()) {
    if (!group.starts_with("Profile")) continue;
    const auto path = file.text(group, "Path");
    if (!path || path->empty()) return brokenList("a profile has no path");
    // An absolute path stays what it is.
    const std::filesystem::path profile = (root / *path).lexically_normal();
    std::error_code failure;
    if (!std::filesystem::is_directory(profile, failure))
      return brokenList("a profile is not there");
    profiles.insert(profile);
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
