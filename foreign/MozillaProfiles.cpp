#include "foreign/MozillaProfiles.h"

#include <string>
#include <utility>

#include "foreign/ForeignFiles.h"
#include "foreign/KeyFile.h"

namespace quenlet {
namespace {

constexpr char profilesFile[] = "profiles.ini";

ErrorPtr addProfiles(const std::filesystem::path& root, MozillaProfiles::Paths& profiles) {
  const auto text = ForeignFiles::readLines(root / profilesFile);
  if (!text.ok()) return ForeignFiles::locate(profilesFile, *text.error());
  if (!text.value()) return nullptr;
  const Result<KeyFile> file = KeyFile::parse(*text.value());
  if (!file.ok()) return ForeignFiles::locate(profilesFile, *file.error());
  for (const std::string& group : file.value().groups()) {
    const auto path = file.value().text(group, "Path");
    if (!group.starts_with("Profile") || !path) continue;
    // An absolute path stays what it is.
    profiles.insert((root / *path).lexically_normal());
  }
  return nullptr;
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
