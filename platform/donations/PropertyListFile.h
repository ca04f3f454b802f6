#pragma once

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>

#include "platform/files/DataProxy.h"
#include "platform/files/LockFile.h"
#include "platform/foundation/Either.h"
#include "platform/foundation/Future.h"
#include "platform/foundation/PropertyList.h"

namespace quenlet {

// A property-list file with a dictionary at its top level that several processes change. Thread-
// safe. Nothing is cached: each operation works on the file as it is.
//
// Changes exclude each other, across threads and processes, by an flock on "<name>.lock" beside
// the file, so that none undoes another. Readers need no lock, for the file is replaced as a whole.
class PropertyListFile final {
 public:
  // Edits the entries; answers whether they changed.
  using Change = std::function<bool(PropertyListDictionary& entries)>;
  // What a change does to a file that is damaged.
  enum class OnDamage : std::uint8_t { replaceFile, fail };

  // `lockPatience` is how long a change waits for somebody else's.
  PropertyListFile(std::filesystem::path path, std::shared_ptr<DataProxy> dataProxy,
                   std::chrono::milliseconds lockPatience = LockFile::usualPatience);

  [[nodiscard]] const std::filesystem::path& path() const { return filePath; }

  // The entries; none when there is no file. An error when the file cannot be read, from
  // PropertyListErrorDomain when it is damaged.
  [[nodiscard]] Result<PropertyListDictionary> read() const;

  // Reads, calls `change` on the calling thread, and writes when it answers true. A damaged file
  // that is to be replaced is kept aside and counts as empty; else it fails the future as what
  // cannot be read does, and stays.
  // Waits while somebody else's change is under way; when patience ends, an error with code
  // EWOULDBLOCK that says whose. The future succeeds once the bytes are durable and the lock is
  // free again, on the file layer's writer thread, or at once without a write.
  [[nodiscard]] Future<bool> update(const Change& change, OnDamage onDamage) const;

  // Keeps a copy of the file beside it, for a change that has to drop what it does not understand.
  void keepDamagedFile() const;

 private:
  std::filesystem::path filePath;
  std::shared_ptr<DataProxy> dataProxy;
  std::chrono::milliseconds lockPatience;
};

}  // namespace quenlet
