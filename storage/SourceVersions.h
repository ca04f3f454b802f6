#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "platform/foundation/Mutex.h"
#include "platform/logging/AgentLogger.h"
#include "storage/DonationPersistenceProtocol.h"

namespace quenlet {

// Which version of its parser has read each of the agent's own sources: a source that a newer
// parser reads differently is read again. Absent until loaded, and then nothing is noted.
// Thread-safe.
class SourceVersions final {
 public:
  SourceVersions(std::shared_ptr<DonationPersistenceProtocol> versionsPersistence,
                 std::shared_ptr<AgentLogger> agentLogger)
      : persistence(std::move(versionsPersistence)), logger(std::move(agentLogger)) {}

  // Waits for the file. Keeps what it has if the load fails.
  void loadExtensionVersions() EXCLUDES(mutex);
  // Does not wait: a lost entry costs one more reload.
  void saveExtensionVersions() EXCLUDES(mutex);

  [[nodiscard]] bool areLoaded() const EXCLUDES(mutex);
  // Whether the source was read by this version or a later one.
  [[nodiscard]] bool isCurrent(const std::string& bundleIdentifier, std::int64_t version) const
      EXCLUDES(mutex);
  void note(const std::string& bundleIdentifier, std::int64_t version) EXCLUDES(mutex);

 private:
  const std::shared_ptr<DonationPersistenceProtocol> persistence;
  const std::shared_ptr<AgentLogger> logger;
  mutable Mutex mutex;
  std::optional<ExtensionVersions> bundleIDVersions GUARDED_BY(mutex);
};

}  // namespace quenlet
