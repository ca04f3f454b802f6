#include "platform/files/PosixFileOperations.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>

namespace quenlet {

using std::filesystem::path;

int PosixFileOperations::open(const path& file, int flags, mode_t mode) {
  return ::open(file.c_str(), flags, mode);
}

ssize_t PosixFileOperations::read(int descriptor, void* buffer, std::size_t size) {
  return ::read(descriptor, buffer, size);
}

ssize_t PosixFileOperations::write(int descriptor, const void* bytes, std::size_t size) {
  return ::write(descriptor, bytes, size);
}

int PosixFileOperations::fsync(int descriptor) { return ::fsync(descriptor); }

int PosixFileOperations::close(int descriptor) { return ::close(descriptor); }

int PosixFileOperations::rename(const path& from, const path& to) {
  return ::rename(from.c_str(), to.c_str());
}

int PosixFileOperations::mkdir(const path& directory, mode_t mode) {
  return ::mkdir(directory.c_str(), mode);
}

int PosixFileOperations::link(const path& from, const path& to) {
  return ::linkat(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), AT_SYMLINK_FOLLOW);
}

}  // namespace quenlet
