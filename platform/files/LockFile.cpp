#include "platform/files/LockFile.h"

#include <fcntl.h>
#include <sys/file.h>

#include <cerrno>
#include <string>
#include <thread>
#include <utility>

namespace quenlet {
namespace {

int flockRetrying(int descriptor, int operation) {
  int outcome = 0;
  do outcome = ::flock(descriptor, operation);
  while (outcome != 0 && errno == EINTR);
  return outcome;
}

}  // namespace

Result<std::shared_ptr<LockFile>> LockFile::tryLock(const std::filesystem::path& file) {
  return open(file, LOCK_EX | LOCK_NB);
}

Result<std::shared_ptr<LockFile>> LockFile::lock(const std::filesystem::path& file) {
  return open(file, LOCK_EX);
}

Result<std::shared_ptr<LockFile>> LockFile::lock(const std::filesystem::path& file,
                                                 std::chrono::milliseconds patience) {
  constexpr std::chrono::milliseconds pause(10);
  const auto deadline = std::chrono::steady_clock::now() + patience;
  auto locked = tryLock(file);
  while (!locked.isLeft() && locked.right()->code() == EWOULDBLOCK &&
         std::chrono::steady_clock::now() < deadline) {
    std::this_thread::sleep_for(pause);
    locked = tryLock(file);
  }
  return locked;
}

Result<std::shared_ptr<LockFile>> LockFile::open(const std::filesystem::path& file, int operation) {
  using Opened = Result<std::shared_ptr<LockFile>>;
  const std::string name = file.filename().string();
  // Not blocking, so that a FIFO put in the file's place is an error and not a hang.
  FileDescriptor descriptor(
      ::open(file.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK, 0600));
  if (!descriptor.isOpen()) return Opened::right(makePosixError(errno, "open " + name));
  if (flockRetrying(descriptor.get(), operation) != 0) {
    return Opened::right(makePosixError(errno, "lock " + name));
  }
  return Opened::left(std::shared_ptr<LockFile>(new LockFile(std::move(descriptor))));
}

}  // namespace quenlet
