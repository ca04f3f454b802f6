#pragma once

#include <filesystem>
#include <set>
#include <string>
#include <string_view>

#include "platform/files/FileOperations.h"
#include "platform/foundation/Error.h"
#include "platform/foundation/Mutex.h"

namespace quenlet {

// Writes whole files so that a crash or a power failure at any moment leaves the old content or the
// new one, and so that what it reported as written stays. Thread-safe.
//
// The bytes go into a temporary beside the target, ".<name>.quenlet-<random>", which is locked
// (flock) until it has taken the target's place: a temporary that nobody has locked is a crash's
// leftover and is removed at the first write of its target by this writer.
class DurableFileWriter final {
 public:
  explicit DurableFileWriter(FileOperations& fileOperations) : operations(fileOperations) {}

  // Replaces `target`, with mode 0600; missing directories are created (0700). When `target` is a
  // symbolic link, the file it leads to is replaced and the link stays; a link that leads nowhere
  // is itself replaced. On failure no temporary stays and the old file is untouched, but for the
  // very last step: a directory that cannot be made durable is reported with the new bytes in
  // place.
  [[nodiscard]] ErrorPtr replace(const std::filesystem::path& target, std::string_view data)
      EXCLUDES(mutex);

  // Creates `file` durably with mode 0600. An error with code EEXIST when it is there already; no
  // part of a file that could not be finished stays. Its directory has to exist.
  [[nodiscard]] ErrorPtr create(const std::filesystem::path& file, std::string_view data);

  // Removes what crashes left in `directory`, whatever its target was. Best effort.
  static void removeLeftovers(const std::filesystem::path& directory);

 private:
  [[nodiscard]] int replaceResolved(const std::filesystem::path& target, std::string_view data);
  [[nodiscard]] int fill(int descriptor, std::string_view data);
  void removeLeftoversOnce(const std::filesystem::path& target) EXCLUDES(mutex);

  FileOperations& operations;
  Mutex mutex;
  std::set<std::filesystem::path> cleanedTargets GUARDED_BY(mutex);
};

}  // namespace quenlet
