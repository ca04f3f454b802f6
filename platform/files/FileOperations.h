#pragma once

#include <sys/types.h>

#include <cerrno>
#include <cstddef>
#include <filesystem>

namespace quenlet {

// The system calls that a full, broken or read-only disk makes fail. Each returns what the call of
// that name returns, and sets errno. Thread-safe.
class FileOperations {
 public:
  virtual ~FileOperations() = default;
  [[nodiscard]] virtual int open(const std::filesystem::path& file, int flags, mode_t mode) = 0;
  [[nodiscard]] virtual ssize_t read(int descriptor, void* buffer, std::size_t size) = 0;
  [[nodiscard]] virtual ssize_t write(int descriptor, const void* bytes, std::size_t size) = 0;
  [[nodiscard]] virtual int fsync(int descriptor) = 0;
  [[nodiscard]] virtual int close(int descriptor) = 0;
  [[nodiscard]] virtual int rename(const std::filesystem::path& from,
                                   const std::filesystem::path& to) = 0;
  [[nodiscard]] virtual int mkdir(const std::filesystem::path& directory, mode_t mode) = 0;
  // Gives the file `from`, or the one that it links to, a second name. Not every file system can:
  // then, as here, it fails with EOPNOTSUPP or another error, and callers must do without.
  [[nodiscard]] virtual int link(const std::filesystem::path& /*from*/,
                                 const std::filesystem::path& /*to*/) {
    errno = EOPNOTSUPP;
    return -1;
  }
};

}  // namespace quenlet
