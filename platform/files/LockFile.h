#pragma once

#include <chrono>
#include <filesystem>
#include <memory>

#include "platform/foundation/Either.h"
#include "platform/scheduling/FileDescriptor.h"

namespace quenlet {

// Holds a file's exclusive lock for as long as it lives; the kernel lets go when the process ends
// in any way. The lock counts between open files, so two LockFiles of one process exclude each
// other too. Immutable. The file is created when missing (0600; its directory is not) and left in
// place: removing it would let two holders lock two files of the same name.
class LockFile final {
 public:
  // For locks that others hold for the time of one small write.
  static constexpr std::chrono::milliseconds usualPatience = std::chrono::seconds(2);

  // An error with code EWOULDBLOCK when somebody else holds the lock; another one when the file
  // cannot be opened.
  [[nodiscard]] static Result<std::shared_ptr<LockFile>> tryLock(const std::filesystem::path& file);
  // Waits for the current holder, no longer than `patience`, and then fails as tryLock() does; the
  // sentence then says which process holds the lock, as far as the kernel tells.
  [[nodiscard]] static Result<std::shared_ptr<LockFile>> lock(
      const std::filesystem::path& file, std::chrono::milliseconds patience = usualPatience);

  LockFile(const LockFile&) = delete;
  LockFile& operator=(const LockFile&) = delete;

 private:
  explicit LockFile(FileDescriptor locked) : descriptor(std::move(locked)) {}

  const FileDescriptor descriptor;
};

}  // namespace quenlet
