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

// The manifests (*.plist) in a list of directories. A manifest or directory that others can write,
// or a damaged manifest, is skipped and reported on standard error once while that lasts.
// Thread-safe.
class ExtensionCatalog final {
 public:
  // How many manifests are read in one directory, good or bad.
  static constexpr std::size_t maximumManifests = 1000;

  struct Content final {
    // By directory in their order, then by file name; the first one for each bundle identifier.
    std::vector<ExtensionManifestPtr> manifests;
    // Set when a directory exists but cannot be read: manifests may be missing.
    ErrorPtr unreadable;
    // The same manifests by the canonical key of their bundle identifiers.
    std::map<std::string, ExtensionManifestPtr> byBundle;

    // The manifest for `bundleIdentifier`, compared by canonical equivalence. Errors: notInstalled,
    // manifestsUnreadable.
    [[nodiscard]] Result<ExtensionManifestPtr> manifest(const std::string& bundleIdentifier) const;
  };

  // Directories that do not exist are ignored.
  explicit ExtensionCatalog(std::vector<ManifestDirectory> manifestDirectories);

  [[nodiscard]] std::shared_ptr<const Content> read() const EXCLUDES(mutex);
  // The last content if it is at most a second old, else read(). Renewal asks 2 s after a donation,
  // so it always sees the extensions that were installed by the time of the donation.
  [[nodiscard]] std::shared_ptr<const Content> recent() const EXCLUDES(mutex);

 private:
  class Reading;
  // Pairs of a subject (a path) and the problem with it.
  using Problems = std::vector<std::pair<std::string, ErrorPtr>>;
  void report(const Problems& problems) const EXCLUDES(mutex);

  const std::vector<ManifestDirectory> directories;
  mutable Mutex mutex;
  mutable std::shared_ptr<const Content> lastRead GUARDED_BY(mutex);
  mutable std::chrono::steady_clock::time_point lastReadAt GUARDED_BY(mutex);
  mutable std::map<std::string, std::shared_ptr<ProblemReporter>> reporters GUARDED_BY(mutex);
};

}  // namespace quenlet
