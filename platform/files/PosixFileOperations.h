#pragma once

#include "platform/files/FileOperations.h"

namespace quenlet {

// The real system calls.
class PosixFileOperations final : public FileOperations {
 public:
  [[nodiscard]] int open(const std::filesystem::path& file, int flags, mode_t mode) override;
  [[nodiscard]] ssize_t read(int descriptor, void* buffer, std::size_t size) override;
  [[nodiscard]] ssize_t write(int descriptor, const void* bytes, std::size_t size) override;
  [[nodiscard]] int fsync(int descriptor) override;
  [[nodiscard]] int close(int descriptor) override;
  [[nodiscard]] int rename(const std::filesystem::path& from,
                           const std::filesystem::path& to) override;
  [[nodiscard]] int mkdir(const std::filesystem::path& directory, mode_t mode) override;
  [[nodiscard]] int link(const std::filesystem::path& from,
                         const std::filesystem::path& to) override;
};

}  // namespace quenlet
