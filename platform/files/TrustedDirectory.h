#pragma once

#include <sys/stat.h>

#include <filesystem>
#include <string>
#include <vector>

#include "platform/foundation/FileDescriptor.h"
#include "quenlet/Error.h"
#include "quenlet/Result.h"

namespace quenlet {

// An open directory that only root and the process's user can have written to, like those through
// which it was opened. Files and subdirectories are reached through its descriptor, so the
// directory that was checked is the one that is read, even if somebody puts another in its place
// meanwhile. Says nothing about the directories above the first one. For one thread.
class TrustedDirectory final {
 public:
  static constexpr std::size_t maximumFileSizeInBytes = std::size_t{1} << 20;
  // How to treat a file that is a symbolic link.
  enum class Links { followed, refused };

  // An error when the directory does not exist (ENOENT), or when it belongs to a user other than
  // root and the process's own, or its group or others can write to it (EACCES).
  [[nodiscard]] static Result<TrustedDirectory> open(const std::filesystem::path& path);
  // The same for a directory in this one.
  [[nodiscard]] Result<TrustedDirectory> subdirectory(const std::string& name) const;

  [[nodiscard]] const std::filesystem::path& path() const { return location; }
  // The names in it, sorted.
  [[nodiscard]] Result<std::vector<std::string>> names() const;
  // The bytes of a regular file in it, with the same demands on owner and mode, and of at most
  // `maximumSizeInBytes`. Never waits.
  [[nodiscard]] Result<std::string> readFile(
      const std::string& name, std::size_t maximumSizeInBytes = maximumFileSizeInBytes,
      Links links = Links::followed) const;
  // Why readFile() would refuse the owner, mode or type of a file in it; null when it would not.
  [[nodiscard]] ErrorPtr examineFile(const std::string& name) const;

 private:
  TrustedDirectory(std::filesystem::path path, FileDescriptor opened);
  [[nodiscard]] static Result<TrustedDirectory> openIn(int parent, const std::string& name,
                                                       std::filesystem::path path);

  std::filesystem::path location;
  FileDescriptor descriptor;
};

}  // namespace quenlet
