#pragma once

#include <array>
#include <filesystem>
#include <memory>
#include <set>
#include <string>

#include "platform/foundation/Cancelable.h"
#include "platform/foundation/Mutex.h"
#include "platform/foundation/PropertyList.h"
#include "platform/ipc/EntitlementTable.h"
#include "platform/scheduling/EventLoop.h"

namespace quenlet {

// The entitlements of programs, from the property lists in <prefix>/share/quenlet/entitlements and
// <configuration>/quenlet/entitlements; the latter take precedence. The files are read on
// construction and at each reload(), into a new table that replaces the former one atomically.
// EntitlementTable.h says which files count. Thread-safe.
class EntitlementDatabase final {
 public:
  // Below the prefix and below the configuration.
  static constexpr char installedPath[] = "share/quenlet/entitlements";
  static constexpr char configuredPath[] = "quenlet/entitlements";

  // Directories that do not exist entitle nobody; an empty `configuration` is not searched. Files
  // that are left out are reported on standard error.
  explicit EntitlementDatabase(std::filesystem::path prefix,
                               const std::filesystem::path& configuration = {});

  // The configuration of the system.
  static constexpr char systemConfiguration[] = "/etc";
  // The parent of the running program's directory; empty when it is not known.
  [[nodiscard]] static std::filesystem::path prefixOfRunningProgram();

  // What the files say now, as an agent with that prefix reads them; reports nothing.
  [[nodiscard]] static EntitlementTable tableFor(const std::filesystem::path& prefix,
                                                 const std::filesystem::path& configuration);

  // The current entitlements of a program, given by its path with all links resolved; null when it
  // has none. A program that others than root and the own user could replace or write (see
  // TrustedProgram.h) has none; that is reported on standard error, once per table. For programs
  // below the prefix, only the path from there is checked.
  [[nodiscard]] std::shared_ptr<const PropertyListDictionary> entitlementsOf(
      const std::filesystem::path& executable) const EXCLUDES(mutex);

  // Reads the files again. The former table stays when a file cannot be read for now: no program
  // loses its entitlements because the system is short of descriptors.
  void reload() EXCLUDES(mutex);
  // Reloads, on the loop's thread, when one of the directories changes, appears or disappears,
  // until the token is cancelled. The loop and this object must outlive the watch.
  [[nodiscard]] std::shared_ptr<Cancelable> reloadOnChanges(EventLoop& loop);

 private:
  struct Directory final {
    std::filesystem::path base;
    std::filesystem::path below;
  };
  [[nodiscard]] static std::array<Directory, 2> directoriesFor(
      const std::filesystem::path& prefix, const std::filesystem::path& configuration);
  [[nodiscard]] static EntitlementTable read(const std::array<Directory, 2>& directories,
                                             const std::filesystem::path& prefix);
  [[nodiscard]] EntitlementTable readTable() const;
  void reportUntrusted(const std::filesystem::path& executable, const std::string& reason) const
      EXCLUDES(mutex);

  const std::filesystem::path prefix;
  const std::array<Directory, 2> directories;

  mutable Mutex mutex;
  std::shared_ptr<const EntitlementTable> table GUARDED_BY(mutex);
  mutable std::set<std::string> reportedPrograms GUARDED_BY(mutex);
};

}  // namespace quenlet
