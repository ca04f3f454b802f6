#pragma once

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>

#include "platform/files/DataProxy.h"
#include "platform/files/LockFile.h"
#include "platform/foundation/Future.h"
#include "platform/foundation/PropertyList.h"
#include "quenlet/Result.h"

namespace quenlet {

// A property-list file, with a dictionary at its top level, that several processes may change.
// Thread-safe. Nothing is cached: each operation works on the current file.
//
// Changes exclude each other, across threads and processes, with an flock on "<name>.lock" beside
// the file, so none is lost. Readers need no lock: the file is always replaced as a whole.
class PropertyListFile final {
 public:
  // Edits the entries; returns whether they changed.
  using Change = std::function<bool(PropertyListDictionary& entries)>;
  enum class OnDamage : std::uint8_t { replaceFile, fail };

  // `lockPatience` is how long a change waits for the lock.
  PropertyListFile(std::filesystem::path path, std::shared_ptr<DataProxy> dataProxy,
                   std::chrono::milliseconds lockPatience = LockFile::usualPatience);

  [[nodiscard]] const std::filesystem::path& path() const { return filePath; }

  // The entries; empty without a file. An error when the file cannot be read, in
  // PropertyListErrorDomain when it is damaged.
  [[nodiscard]] Result<PropertyListDictionary> read() const;

  // Reads, calls `change` on the calling thread, and writes if it returns true. With replaceFile, a
  // damaged file counts as empty, and a copy of it is kept; with `fail`, it fails the future and
  // stays. So does a file that cannot be read, in either case.
  // Blocks while another change is under way, up to the patience; then an error with code
  // EWOULDBLOCK that says whose. The future succeeds once the bytes are durable and the lock is
  // free again, on the file layer's writer thread; at once if nothing is to be written.
  [[nodiscard]] Future<bool> update(const Change& change, OnDamage onDamage) const;

  // Keeps a copy of the file beside it, for a change that must drop an entry it does not know.
  void keepDamagedFile() const;

 private:
  std::filesystem::path filePath;
  std::shared_ptr<DataProxy> dataProxy;
  std::chrono::milliseconds lockPatience;
};

}  // namespace quenlet
