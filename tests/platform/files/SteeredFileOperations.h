#pragma once

#include <functional>

#include "platform/files/PosixFileOperations.h"

namespace quenlet {

// The real system calls, some of which the test makes fail, fall short or wait before they begin.
class SteeredFileOperations final : public FileOperations {
 public:
  // Makes the `number`-th call (from 1 on) of `operation` fail with `failure`.
  void fail(const std::string& operation, int failure, int number = 1) {
    failing = operation;
    errorNumber = failure;
    countdown = number;
  }
  std::size_t longestWrite = SIZE_MAX;
  std::function<void()> beforeRename;
  int renames = 0;

  int open(const std::filesystem::path& file, int flags, mode_t mode) override {
    return refuses("open") ? -1 : real.open(file, flags, mode);
  }
  ssize_t read(int descriptor, void* buffer, std::size_t size) override {
    return refuses("read") ? -1 : real.read(descriptor, buffer, size);
  }
  ssize_t write(int descriptor, const void* bytes, std::size_t size) override {
    return refuses("write") ? -1 : real.write(descriptor, bytes, std::min(size, longestWrite));
  }
  int fsync(int descriptor) override { return refuses("fsync") ? -1 : real.fsync(descriptor); }
  // As the kernel does, closes even when it reports a failure.
  int close(int descriptor) override {
    const int outcome = real.close(descriptor);
    return refuses("close") ? -1 : outcome;
  }
  int rename(const std::filesystem::path& from, const std::filesystem::path& to) override {
    ++renames;
    if (beforeRename) beforeRename();
    return refuses("rename") ? -1 : real.rename(from, to);
  }
  int mkdir(const std::filesystem::path& directory, mode_t mode) override {
    return refuses("mkdir") ? -1 : real.mkdir(directory, mode);
  }

 private:
  bool refuses(const std::string& operation) {
    if (operation != failing || --countdown != 0) return false;
    errno = errorNumber;
    return true;
  }

  PosixFileOperations real;
  std::string failing;
  int errorNumber = 0;
  int countdown = 0;
};

}  // namespace quenlet
