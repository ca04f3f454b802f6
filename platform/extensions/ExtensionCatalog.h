#pragma once

#include <chrono>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "platform/extensions/ExtensionManifest.h"
#include "platform/extensions/ManifestDirectory.h"
#include "platform/foundation/Mutex.h"
#include "platform/foundation/ProblemReporter.h"

namespace quenlet {

// The manifests (*.plist) in some directories. A manifest or directory that
// somebody else can have written, or a manifest that is damaged, is passed over with a line on
// standard error; not again while that lasts. Thread-safe.
class ExtensionCatalog final {
 public:
  // Looked at in one directory, good or bad.
  static constexpr std::size_t maximumManifests = 1000;

  struct Content final {
    // By the order of the directories, then by file name; the first one of each bundle identifier.
    std::vector<ExtensionManifestPtr> manifests;
    // Not null when a directory is there but cannot be read: manifests may be missing.
    ErrorPtr unreadable;
    // The same manifests by the canonical key of their bundle identifiers.
    std::map<std::string, ExtensionManifestPtr> byBundle;

    // What is installed under `bundleIdentifier`, by canonical equivalence. Errors: notInstalled,
    // manifestsUnreadable.
    [[nodiscard]] Result<ExtensionManifestPtr> manifest(const std::string& bundleIdentifier) const;
  };

  // A directory that does not exist holds nothing.
  explicit ExtensionCatalog(std::vector<ManifestDirectory> manifestDirectories);

  [[nodiscard]] std::shared_ptr<const Content> read() const EXCLUDES(mutex);
  // What was read within the last second, or else now. Renewal asks 2 s after the donation that it
  // is about, so that it misses nothing that was installed by then.
  [[nodiscard]] std::shared_ptr<const Content> recent() const EXCLUDES(mutex);

 private:
  class Reading;
  // The subject (a path) and what is wrong with it.
  using Problems = std::vector<std::pair<std::string, ErrorPtr>>;
  void report(const Problems& problems) const EXCLUDES(mutex);

  const std::vector<ManifestDirectory> directories;
  mutable Mutex mutex;
  mutable std::shared_ptr<const Content> lastRead GUARDED_BY(mutex);
  mutable std::chrono::steady_clock::time_point lastReadAt GUARDED_BY(mutex);
  mutable std::map<std::string, std::shared_ptr<ProblemReporter>> reporters GUARDED_BY(mutex);
};

}  // namespace quenlet
