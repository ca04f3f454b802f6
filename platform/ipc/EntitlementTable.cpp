#include "platform/ipc/EntitlementTable.h"

#include <sys/stat.h>

#include <cerrno>
#include <system_error>

#include "platform/files/TrustedDirectory.h"
#include "platform/foundation/PropertyListSerializer.h"

namespace quenlet {
namespace {

std::string canonicalPath(const std::filesystem::path& path) {
  std::error_code failure;
  std::filesystem::path canonical = std::filesystem::weakly_canonical(path, failure);
  return failure ? path.lexically_normal().native() : canonical.native();
}

// Errors that say nothing about the file: later it may be readable without a change.
bool isPassing(const Error& error) {
  if (error.domain() != PosixErrorDomain) return false;
  for (const int code : {EMFILE, ENFILE, ENOMEM, EIO, EINTR, ESTALE}) {
    if (error.code() == code) return true;
  }
  return false;
}

}  // namespace

// Paths with their links resolved, as far as they exist. Resolves each directory once: most of the
// programs that files name stand in the same one.
class CanonicalPaths final {
 public:
  [[nodiscard]] std::string of(const std::filesystem::path& path) {
    const std::filesystem::path name = path.filename();
    struct stat status {};
    const bool exists = ::lstat(path.c_str(), &status) == 0;
    const bool isPlain = exists ? !S_ISLNK(status.st_mode) : errno == ENOENT;
    if (!isPlain || name.empty() || name == "." || name == "..") return canonicalPath(path);
    const auto [directory, isNew] = directories.try_emplace(path.parent_path());
    if (isNew) directory->second = canonicalPath(path.parent_path());
    return directory->second / name;
  }

 private:
  std::map<std::filesystem::path, std::filesystem::path> directories;
};

void EntitlementTable::leaveOut(const std::filesystem::path& path, const Error& error) {
  if (isPassing(error)) incomplete = true;
  leftOut.push_back({path, error.debugDescription()});
}

void EntitlementTable::addDirectory(const std::filesystem::path& base,
                                    const std::filesystem::path& below,
                                    const std::filesystem::path& prefix) {
  std::filesystem::path path = base;
  Result<TrustedDirectory> directory = TrustedDirectory::open(path);
  for (const std::filesystem::path& part : below) {
    if (!directory.ok()) break;
    path /= part;
    directory = directory.value().subdirectory(part.native());
  }
  if (!directory.ok()) {
    if (directory.error()->code() != ENOENT) leaveOut(path, *directory.error());
    return;
  }
  CanonicalPaths canonical;
  const Result<std::vector<std::string>> names = directory.value().names();
  if (!names.ok()) return leaveOut(path, *names.error());
  for (const std::string& name : names.value()) {
    if (std::filesystem::path(name).extension() != ".plist") continue;
    addFile(directory.value(), name, prefix, canonical);
  }
}

void EntitlementTable::addFile(const TrustedDirectory& directory, const std::string& name,
                               const std::filesystem::path& prefix, CanonicalPaths& canonical) {
  const std::filesystem::path file = directory.path() / name;
  const Result<std::string> text = directory.readFile(
      name, TrustedDirectory::maximumFileSizeInBytes, TrustedDirectory::Links::refused);
  if (!text.ok()) return leaveOut(file, *text.error());
  const Result<PropertyList> content = PropertyListSerializer::objectWithData(text.value());
  if (!content.ok()) return leaveOut(file, *content.error());
  const PropertyListDictionary* named = content.value().dictionary();
  if (named == nullptr) {
    leftOut.push_back({file, "its top level is not a dictionary"});
    return;
  }
  for (const auto& [path, entitlements] : *named) {
    if (entitlements.dictionary() == nullptr) {
      leftOut.push_back({file, "the value of " + path + " is not a dictionary"});
      continue;
    }
    // operator/ drops the prefix when `path` is absolute.
    Program& program = programs[canonical.of(prefix / path)];
    program.files.push_back(file);
    for (const auto& [entitlement, value] : *entitlements.dictionary()) {
      program.entitlements->insert_or_assign(entitlement, value);
    }
  }
}

std::shared_ptr<const PropertyListDictionary> EntitlementTable::entitlementsOf(
    const std::filesystem::path& executable) const {
  const auto found = programs.find(executable.native());
  return found == programs.end() ? nullptr : found->second.entitlements;
}

}  // namespace quenlet
