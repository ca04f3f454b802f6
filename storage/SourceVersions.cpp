#include "storage/SourceVersions.h"

namespace quenlet {

void SourceVersions::loadExtensionVersions() {
  logger->willLoadExtensionVersions();
  const Future<ExtensionVersions> load = persistence->loadExtensionVersions();
  const Result<ExtensionVersions>& loaded = load.result();
  if (!loaded.ok()) return;
  MutexLock lock(mutex);
  bundleIDVersions = loaded.value();
}

void SourceVersions::saveExtensionVersions() {
  logger->willSaveExtensionVersions();
  std::optional<ExtensionVersions> versions;
  {
    MutexLock lock(mutex);
    versions = bundleIDVersions;
  }
  if (versions) static_cast<void>(persistence->storeWithExtensionVersions(*versions));
}

bool SourceVersions::areLoaded() const {
  MutexLock lock(mutex);
  return bundleIDVersions.has_value();
}

bool SourceVersions::isCurrent(const std::string& bundleIdentifier, std::int64_t version) const {
  MutexLock lock(mutex);
  if (!bundleIDVersions) return false;
  const auto entry = bundleIDVersions->find(bundleIdentifier);
  return entry != bundleIDVersions->end() && entry->second >= version;
}

void SourceVersions::note(const std::string& bundleIdentifier, std::int64_t version) {
  MutexLock lock(mutex);
  if (bundleIDVersions) (*bundleIDVersions)[bundleIdentifier] = version;
}

}  // namespace quenlet
