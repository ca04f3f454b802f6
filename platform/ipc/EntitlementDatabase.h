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

// What programs are entitled to, as the property lists in <prefix>/share/quenlet/entitlements and
// <configuration>/quenlet/entitlements have it; the latter count more. The files are read at the
// start and at each reload(), into a table that takes the place of the former one in one step. See
// EntitlementTable.h for which files count. Thread-safe.
class EntitlementDatabase final {
 public:
  // Directories that do not exist entitle nobody. No configuration is looked for in an empty path.
  explicit EntitlementDatabase(std::filesystem::path prefix,
                               std::filesystem::path configuration = {});

  // The directory above the one that holds the running program. Empty when that cannot be told.
  [[nodiscard]] static std::filesystem::path prefixOfRunningProgram();

  // The entitlements of a program, as they are now; null when it has none. A program that others
  // than root and the own user could replace or write (see TrustedProgram.h) has none, which is
  // said on standard error, once a table. Above the prefix nothing is looked at for a program below
  // it.
  [[nodiscard]] std::shared_ptr<const PropertyListDictionary> entitlementsOf(
      const std::filesystem::path& executable) const EXCLUDES(mutex);

  // Reads the files anew. The former table stays when they cannot be read for now: no program loses
  // its entitlements because the system is short of descriptors.
  void reload() EXCLUDES(mutex);
  // Reloads when something changes in one of the directories, or it appears or goes, until the
  // token is cancelled. On the loop's thread; the loop and this object outlive the watch.
  [[nodiscard]] std::shared_ptr<Cancelable> reloadOnChanges(EventLoop& loop);

 private:
  struct Directory final {
    std::filesystem::path base;
    std::filesystem::path below;
  };
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
