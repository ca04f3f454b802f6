#include "platform/ipc/EntitlementDatabase.h"

#include <cerrno>
#include <optional>
#include <system_error>
#include <utility>
#include <vector>

#include "platform/files/TrustedDirectory.h"
#include "platform/foundation/PropertyListSerializer.h"
#include "platform/foundation/StandardStreams.h"

namespace quenlet {

namespace {

void reportIgnored(const std::filesystem::path& path, const std::string& reason) {
  StandardStreams::writeError("quenlet: entitlements in " + path.native() +
                              " are ignored: " + reason);
}

std::string canonicalPath(const std::filesystem::path& path) {
  std::error_code failure;
  std::filesystem::path canonical = std::filesystem::weakly_canonical(path, failure);
  return failure ? path.lexically_normal().native() : canonical.native();
}

// <prefix>/share/quenlet/entitlements; nothing when one of the directories is missing, or cannot be
// trusted, which is said.
std::optional<TrustedDirectory> openEntitlements(const std::filesystem::path& prefix) {
  std::filesystem::path path = prefix;
  Result<TrustedDirectory> opened = TrustedDirectory::open(path);
  for (const char* name : {"share", "quenlet", "entitlements"}) {
    if (!opened.isLeft()) break;
    path /= name;
    opened = opened.left().subdirectory(name);
  }
  if (opened.isLeft()) return std::move(opened).takeLeft();
  if (opened.right()->code() != ENOENT) reportIgnored(path, opened.right()->debugDescription());
  return std::nullopt;
}

}  // namespace

EntitlementDatabase::EntitlementDatabase(const std::filesystem::path& prefix) {
  const std::optional<TrustedDirectory> directory = openEntitlements(prefix);
  if (!directory) return;
  const Result<std::vector<std::string>> names = directory->names();
  if (!names.isLeft()) {
    reportIgnored(directory->path(), names.right()->debugDescription());
    return;
  }
  for (const std::string& name : names.left()) {
    if (std::filesystem::path(name).extension() == ".plist") addFile(*directory, name, prefix);
  }
}

std::filesystem::path EntitlementDatabase::prefixOfRunningProgram() {
  std::error_code failure;
  return std::filesystem::read_symlink("/proc/self/exe", failure).parent_path().parent_path();
}

void EntitlementDatabase::addFile(const TrustedDirectory& directory, const std::string& name,
                                  const std::filesystem::path& prefix) {
  const std::filesystem::path file = directory.path() / name;
  const Result<std::string> text = directory.readFile(name);
  if (!text.isLeft()) return reportIgnored(file, text.right()->debugDescription());
  const Result<PropertyList> content = PropertyListSerializer::objectWithData(text.left());
  if (!content.isLeft()) return reportIgnored(file, content.right()->debugDescription());
  const PropertyListDictionary* programs = content.left().dictionary();
  if (programs == nullptr) return reportIgnored(file, "its top level is not a dictionary");
  for (const auto& [path, entitlements] : *programs) {
    if (entitlements.dictionary() == nullptr) {
      reportIgnored(file, "the value of " + path + " is not a dictionary");
      continue;
    }
    // An absolute path takes the prefix's place.
    auto& known = entitlementsByExecutable[canonicalPath(prefix / path)];
    for (const auto& [entitlement, value] : *entitlements.dictionary()) {
      known.insert_or_assign(entitlement, value);
    }
  }
}

std::optional<PropertyList> EntitlementDatabase::value(const std::filesystem::path& executable,
                                                       const std::string& entitlement) const {
  const auto found = entitlementsByExecutable.find(executable.native());
  if (found == entitlementsByExecutable.end()) return std::nullopt;
  const PropertyList* held = findEntry(found->second, entitlement);
  return held == nullptr ? std::nullopt : std::optional(*held);
}

}  // namespace quenlet
