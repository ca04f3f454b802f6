#include "tools/owner/AvailableExtensions.h"

#include <algorithm>
#include <cerrno>
#include <system_error>
#include <utility>

#include "platform/files/DurableDirectory.h"
#include "platform/files/DurableFileWriter.h"
#include "platform/files/PosixFileOperations.h"
#include "platform/files/TrustedDirectory.h"
#include "platform/files/UserDirectories.h"
#include "platform/foundation/PropertyListSerializer.h"
#include "platform/foundation/Text.h"
#include "platform/ipc/EntitlementDatabase.h"
#include "tools/owner/StoredData.h"

namespace quenlet {
namespace {

using std::filesystem::path;
using Extensions = std::vector<AvailableExtension>;

constexpr char ending[] = ".plist";
// Keys of no interest to the agent. The first is only in manifests that enable() writes.
constexpr char nameKey[] = "name";
constexpr char groupKey[] = "group";
constexpr char readsKey[] = "reads";
const path available = "share/quenlet/extensions-available";

ErrorPtr located(const path& file, const Error& error) {
  return makeError(error.domain(), error.code(), file.native() + ": " + error.debugDescription());
}

void readRemarks(const PropertyListDictionary& entries, AvailableExtension& extension) {
  if (const std::string* name = findString(entries, nameKey)) extension.name = *name;
  if (const std::string* group = findString(entries, groupKey)) extension.group = *group;
  const auto reads = entries.find(readsKey);
  if (reads == entries.end() || reads->second.array() == nullptr) return;
  for (const PropertyList& file : *reads->second.array()) {
    if (file.string() != nullptr) extension.reads.push_back(*file.string());
  }
}

Result<AvailableExtension> readExtension(const TrustedDirectory& directory,
                                         const std::string& name) {
  using Read = Result<AvailableExtension>;
  const auto fail = [&](const Error& error) {
    return Read::failure(located(directory.path() / name, error));
  };
  const auto text = directory.readFile(name, ExtensionManifest::maximumSizeInBytes);
  if (!text.ok()) return fail(*text.error());
  auto manifest = ExtensionManifest::read(text.value(), directory.path());
  if (!manifest.ok()) return fail(*manifest.error());
  AvailableExtension extension{path(name).stem(), {}, {}, std::move(manifest).takeValue()};
  const auto content = PropertyListSerializer::objectWithData(text.value());
  if (!content.ok()) return fail(*content.error());
  readRemarks(*content.value().dictionary(), extension);
  return Read::success(std::move(extension));
}

Result<TrustedDirectory> openBelow(const path& base, const path& below) {
  Result<TrustedDirectory> opened = TrustedDirectory::open(base);
  for (const path& part : below) {
    if (!opened.ok()) break;
    opened = opened.value().subdirectory(part.native());
  }
  return opened;
}

}  // namespace

Result<AvailableExtensions> AvailableExtensions::open() {
  const auto home = UserDirectories::homeDirectory();
  if (!home.ok()) return Result<AvailableExtensions>::failure(home.error());
  return Result<AvailableExtensions>::success(
      openIn(EntitlementDatabase::prefixOfRunningProgram(), home.value()));
}

AvailableExtensions AvailableExtensions::openIn(const path& prefix, const path& home) {
  AvailableExtensions opened(ManifestDirectory::directoriesOf(prefix, home));
  opened.addAvailable(prefix);
  opened.addForsaken();
  std::stable_sort(opened.extensions.begin(), opened.extensions.end(),
                   [](const auto& a, const auto& b) { return a.name < b.name; });
  return opened;
}

void AvailableExtensions::addAvailable(const path& prefix) {
  const Result<TrustedDirectory> directory = openBelow(prefix, available);
  if (!directory.ok() && directory.error()->code() == ENOENT) return;
  const auto names = directory.ok() ? directory.value().names()
                                    : Result<std::vector<std::string>>::failure(directory.error());
  if (!names.ok()) {
    damagedOnes.push_back({"", located(prefix / available, *names.error())});
    return;
  }
  for (const std::string& name : names.value()) {
    if (path(name).extension() != ending) continue;
    Result<AvailableExtension> extension = readExtension(directory.value(), name);
    if (extension.ok()) {
      extensions.push_back(std::move(extension).takeValue());
      extensions.back().name = path(name).stem();
    } else {
      damagedOnes.push_back({path(name).stem(), extension.error()});
    }
  }
}

// Those that enable() has written, and that are not available any more. What the agent passes over
// is passed over here, too: it reports it.
void AvailableExtensions::addForsaken() {
  const ManifestDirectory& own = agents.back();
  const Result<TrustedDirectory> directory = openBelow(own.base, own.below);
  if (!directory.ok()) return;
  const auto names = directory.value().names();
  if (!names.ok()) return;
  for (const std::string& name : names.value()) {
    if (path(name).extension() != ending) continue;
    Result<AvailableExtension> extension = readExtension(directory.value(), name);
    if (!extension.ok()) continue;
    const bool isWritten =
        fileOf(extension.value()).filename() == name && extension.value().name != path(name).stem();
    if (!isWritten || hasBundle(extension.value().manifest.bundleIdentifier)) continue;
    extensions.push_back(std::move(extension).takeValue());
  }
}

bool AvailableExtensions::hasBundle(const std::string& bundleIdentifier) const {
  return std::any_of(extensions.begin(), extensions.end(), [&](const auto& extension) {
    return canonicallyEqual(extension.manifest.bundleIdentifier, bundleIdentifier);
  });
}

Extensions AvailableExtensions::named(const std::string& word) const {
  Extensions found;
  for (const AvailableExtension& extension : extensions) {
    if (extension.name == word || (!word.empty() && extension.group == word)) {
      found.push_back(extension);
    }
  }
  return found;
}

path AvailableExtensions::fileOf(const AvailableExtension& extension) const {
  // The user's own directory comes last.
  return agents.back().path() / (extension.manifest.bundleIdentifier + ending);
}

Result<AvailableExtensions::Place> AvailableExtensions::placeOf(
    const AvailableExtension& extension) const {
  using Told = Result<Place>;
  const path file = fileOf(extension);
  std::error_code failure;
  const auto status = std::filesystem::symlink_status(file, failure);
  if (status.type() == std::filesystem::file_type::not_found) return Told::success(Place::free);
  const auto directory = TrustedDirectory::open(file.parent_path());
  if (!directory.ok()) return Told::failure(located(file.parent_path(), *directory.error()));
  const auto text =
      directory.value().readFile(file.filename(), ExtensionManifest::maximumSizeInBytes);
  if (!text.ok()) return Told::failure(located(file, *text.error()));
  const auto manifest = ExtensionManifest::read(text.value(), file.parent_path());
  const bool isOurs = manifest.ok() && canonicallyEqual(manifest.value().bundleIdentifier,
                                                        extension.manifest.bundleIdentifier);
  return Told::success(isOurs ? Place::ours : Place::othersFile);
}

ErrorPtr AvailableExtensions::enable(const AvailableExtension& extension) const {
  const ExtensionManifest& manifest = extension.manifest;
  // A link or a copy would not do: a relative path of the program counts from the manifest.
  PropertyListDictionary entries{
      {"bundleIdentifier", manifest.bundleIdentifier},
      {"extensionPoint", manifest.extensionPoint},
      {"version", manifest.version},
      {nameKey, extension.name},
      {groupKey, extension.group},
      {readsKey, PropertyListArray(extension.reads.begin(), extension.reads.end())}};
  if (!manifest.executable.empty()) entries.emplace("executable", manifest.executable.native());
  const auto text = PropertyListSerializer::dataWithObject(PropertyList(std::move(entries)));
  if (!text.ok()) return text.error();
  PosixFileOperations operations;
  const path file = fileOf(extension);
  if (const int failure = DurableDirectory::ensure(operations, file.parent_path())) {
    return makePosixError(failure, "make " + file.parent_path().native());
  }
  const ErrorPtr error = DurableFileWriter(operations).create(file, text.value());
  return error ? located(file, *error) : nullptr;
}

ErrorPtr AvailableExtensions::disable(const AvailableExtension& extension) const {
  const auto place = placeOf(extension);
  if (!place.ok()) return place.error();
  return place.value() == Place::ours ? StoredData::remove({fileOf(extension)}) : nullptr;
}

}  // namespace quenlet
