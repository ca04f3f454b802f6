#pragma once

#include <sys/stat.h>

#include <filesystem>
#include <string>
#include <vector>

#include "platform/foundation/Either.h"
#include "platform/foundation/Error.h"
#include "platform/scheduling/FileDescriptor.h"

namespace quenlet {

// An open directory that nobody but root and the own user can have written, and so were those on
// the way to it. Everything is reached through the descriptor of the directory above, so that what
// was checked is what is read, even if somebody puts another directory in its place meanwhile.
// For one thread. Says nothing of what lies above the first directory.
class TrustedDirectory final {
 public:
  static constexpr std::size_t maximumFileSizeInBytes = std::size_t{1} << 20;
  // What becomes of a file that is a link to another one.
  enum class Links { followed, refused };

  // An error when there is no such directory (ENOENT), or it belongs to another user than root and
  // the own one, or its group or others can write it (EACCES).
  [[nodiscard]] static Result<TrustedDirectory> open(const std::filesystem::path& path);
  // The same of a directory in this one.
  [[nodiscard]] Result<TrustedDirectory> subdirectory(const std::string& name) const;

  [[nodiscard]] const std::filesystem::path& path() const { return location; }
  // The names in it, sorted.
  [[nodiscard]] Result<std::vector<std::string>> names() const;
  // The bytes of a regular file in it that has such an owner and mode too, and no more than
  // `maximumSizeInBytes`. Never waits.
  [[nodiscard]] Result<std::string> readFile(
      const std::string& name, std::size_t maximumSizeInBytes = maximumFileSizeInBytes,
      Links links = Links::followed) const;
  // What keeps a file in it from being such a regular file; null when nothing does.
  [[nodiscard]] ErrorPtr examineFile(const std::string& name) const;

 private:
  TrustedDirectory(std::filesystem::path path, FileDescriptor opened);
  [[nodiscard]] static Result<TrustedDirectory> openIn(int parent, const std::string& name,
                                                       std::filesystem::path path);

  std::filesystem::path location;
  FileDescriptor descriptor;
};

}  // namespace quenlet
