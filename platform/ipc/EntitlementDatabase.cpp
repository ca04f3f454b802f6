#include "platform/ipc/EntitlementDatabase.h"

#include <system_error>
#include <utility>
#include <vector>

#include "platform/files/DirectoryWatch.h"
#include "platform/files/TrustedProgram.h"
#include "platform/foundation/StandardStreams.h"

namespace quenlet {

EntitlementDatabase::EntitlementDatabase(std::filesystem::path ownPrefix,
                                         const std::filesystem::path& configuration)
    : prefix(std::move(ownPrefix)),
      directories(directoriesFor(prefix, configuration)),
      table(std::make_shared<const EntitlementTable>(readTable())) {}

std::filesystem::path EntitlementDatabase::prefixOfRunningProgram() {
  std::error_code failure;
  return std::filesystem::read_symlink("/proc/self/exe", failure).parent_path().parent_path();
}

std::array<EntitlementDatabase::Directory, 2> EntitlementDatabase::directoriesFor(
    const std::filesystem::path& prefix, const std::filesystem::path& configuration) {
  return {Directory{prefix, installedPath}, Directory{configuration, configuredPath}};
}

EntitlementTable EntitlementDatabase::read(const std::array<Directory, 2>& directories,
                                           const std::filesystem::path& prefix) {
  EntitlementTable read;
  for (const Directory& directory : directories) {
    if (!directory.base.empty()) read.addDirectory(directory.base, directory.below, prefix);
  }
  return read;
}

EntitlementTable EntitlementDatabase::tableFor(const std::filesystem::path& prefix,
                                               const std::filesystem::path& configuration) {
  return read(directoriesFor(prefix, configuration), prefix);
}

EntitlementTable EntitlementDatabase::readTable() const {
  EntitlementTable current = read(directories, prefix);
  for (const auto& [path, reason] : current.ignored()) {
    StandardStreams::writeError("quenlet: entitlements in " + path.native() +
                                " are ignored: " + reason);
  }
  return current;
}

std::shared_ptr<const PropertyListDictionary> EntitlementDatabase::entitlementsOf(
    const std::filesystem::path& executable) const {
  std::shared_ptr<const EntitlementTable> current;
  {
    MutexLock lock(mutex);
    current = table;
  }
  auto found = current->entitlementsOf(executable);
  if (!found) return nullptr;
  // At each look-up, not once a table: the program may have been replaced since.
  const ErrorPtr reason = whyUntrusted(executable, prefix);
  if (!reason) return found;
  reportUntrusted(executable, reason->debugDescription());
  return nullptr;
}

void EntitlementDatabase::reportUntrusted(const std::filesystem::path& executable,
                                          const std::string& reason) const {
  {
    MutexLock lock(mutex);
    if (!reportedPrograms.insert(executable.native()).second) return;
  }
  StandardStreams::writeError("quenlet: the entitlements of " + executable.native() +
                              " are ignored: " + reason);
}

void EntitlementDatabase::reload() {
  auto changed = std::make_shared<const EntitlementTable>(readTable());
  if (changed->isIncomplete()) {
    StandardStreams::writeError("quenlet: the entitlements stay as they were");
    return;
  }
  MutexLock lock(mutex);
  table.swap(changed);
  reportedPrograms.clear();
}

std::shared_ptr<Cancelable> EntitlementDatabase::reloadOnChanges(EventLoop& loop) {
  std::vector<std::shared_ptr<Cancelable>> watches;
  for (const auto& [base, below] : directories) {
    if (base.empty()) continue;
    watches.push_back(DirectoryWatch::watchForeignDirectory(
        loop, base / below, [this](const std::string&) { reload(); }));
  }
  return std::make_shared<CancelBlock>([watches = std::move(watches)] {
    for (const auto& watch : watches) watch->cancel();
  });
}

}  // namespace quenlet
