#pragma once

#include <filesystem>
#include <set>
#include <string>
#include <string_view>

#include "platform/files/FileContent.h"
#include "platform/files/FileOperations.h"
#include "platform/foundation/Mutex.h"
#include "quenlet/Error.h"

namespace quenlet {

// Writes whole files so that a crash or a power failure at any moment leaves either the old content
// or the new one, and never undoes a write that was reported as done. Thread-safe.
//
//   step                                               a crash after it leaves
//   1. create ".<name>.quenlet-<random>", flock it     old file, temporary
//   2. write, fsync, close the temporary               old file, temporary
//   3. rename it over the target                       new file; after a power failure perhaps old
//   4. fsync the directory, then report success        new file
//
// The lock is held until the end. A temporary that nobody has locked is therefore the leftover of a
// crash; a writer removes those of a target before it first writes that target.
class DurableFileWriter final {
 public:
  explicit DurableFileWriter(FileOperations& fileOperations) : operations(fileOperations) {}

  // Replaces `target`, with mode 0600; missing directories are created (0700). When `target` is a
  // symbolic link, the file it points to is replaced and the link stays; a dangling link is itself
  // replaced. On failure the temporary is removed and the old file is untouched, except in step 4:
  // when the directory cannot be synced, the error comes with the new bytes in place.
  [[nodiscard]] ErrorPtr replace(const std::filesystem::path& target, const FileContent& content)
      EXCLUDES(mutex);
  [[nodiscard]] ErrorPtr replace(const std::filesystem::path& target, std::string_view data)
      EXCLUDES(mutex);

  // Creates `file` durably with mode 0600. An error with code EEXIST when it already exists. On
  // failure no partial file stays. The directory must exist.
  [[nodiscard]] ErrorPtr create(const std::filesystem::path& file, std::string_view data);

  // Removes the leftovers of crashes in `directory`, for any target. Best effort.
  static void removeLeftovers(const std::filesystem::path& directory);

 private:
  [[nodiscard]] int replaceResolved(const std::filesystem::path& target,
                                    const FileContent& content);
  [[nodiscard]] int fill(int descriptor, const FileContent& content);
  [[nodiscard]] int writeAll(int descriptor, std::string_view data);
  [[nodiscard]] int synchronize(int descriptor);
  void removeLeftoversOnce(const std::filesystem::path& target) EXCLUDES(mutex);

  FileOperations& operations;
  Mutex mutex;
  std::set<std::filesystem::path> cleanedTargets GUARDED_BY(mutex);
};

}  // namespace quenlet
