#pragma once

#include <chrono>
#include <filesystem>
#include <memory>

#include "platform/foundation/FileDescriptor.h"
#include "quenlet/Result.h"

namespace quenlet {

// Holds the exclusive lock of a file for the object's lifetime; the kernel releases it when the
// process ends in any way. Two LockFiles in one process exclude each other, too. Immutable. The
// file is created when missing (0600; its directory is not) and never removed: otherwise two
// holders could lock two files of the same name.
class LockFile final {
 public:
  // For locks that others hold only during one small write.
  static constexpr std::chrono::milliseconds usualPatience = std::chrono::seconds(2);
  static constexpr std::chrono::milliseconds usualPause{10};

  // An error with code EWOULDBLOCK when somebody else holds the lock; another error when the file
  // cannot be opened or locked.
  [[nodiscard]] static Result<std::shared_ptr<LockFile>> tryLock(const std::filesystem::path& file);
  // Waits up to `patience` for the current holder, looking again after each `pause`, then fails
  // like tryLock(), with a sentence that names the process that holds the lock if the kernel tells.
  [[nodiscard]] static Result<std::shared_ptr<LockFile>> lock(
      const std::filesystem::path& file, std::chrono::milliseconds patience = usualPatience,
      std::chrono::milliseconds pause = usualPause);

  LockFile(const LockFile&) = delete;
  LockFile& operator=(const LockFile&) = delete;

 private:
  explicit LockFile(FileDescriptor locked) : descriptor(std::move(locked)) {}

  const FileDescriptor descriptor;
};

}  // namespace quenlet
