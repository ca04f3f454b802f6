#include "platform/files/LockFile.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>

#include <cerrno>
#include <fstream>
#include <iomanip>
#include <sstream>
#include <string>
#include <thread>
#include <utility>

#include "platform/foundation/Text.h"

namespace quenlet {
namespace {

// O_NONBLOCK: a FIFO in the file's place must not hang the caller.
int openRetrying(const std::filesystem::path& file) {
  constexpr int flags = O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK;
  int descriptor = -1;
  do descriptor = ::open(file.c_str(), flags, 0600);
  while (descriptor < 0 && errno == EINTR);
  return descriptor;
}

int flockRetrying(int descriptor, int operation) {
  int outcome = 0;
  do outcome = ::flock(descriptor, operation);
  while (outcome != 0 && errno == EINTR);
  return outcome;
}

// The holder of a file's lock, in words. A line of /proc/locks for an flock:
//
//   7: FLOCK  ADVISORY  WRITE 2718 fe:01:131090 0 EOF
//
// Lines of those that only wait for it have "->" before "FLOCK".
std::string holderOf(const std::filesystem::path& file) {
  struct stat status {};
  if (::stat(file.c_str(), &status) != 0) return "another process";
  std::ostringstream inode;
  inode << std::hex << std::setfill('0') << std::setw(2) << major(status.st_dev) << ':'
        << std::setw(2) << minor(status.st_dev) << ':' << std::dec << status.st_ino;
  std::ifstream locks("/proc/locks");
  for (std::string line; std::getline(locks, line);) {
    std::istringstream words(line);
    std::string number, kind, advisory, access, process, place;
    words >> number >> kind >> advisory >> access >> process >> place;
    if (kind != "FLOCK" || place != inode.str()) continue;
    std::string program;
    std::getline(std::ifstream("/proc/" + process + "/comm"), program);
    return "process " + process + (program.empty() ? "" : " (" + onOneLine(program) + ")");
  }
  return "another process";
}

}  // namespace

Result<std::shared_ptr<LockFile>> LockFile::tryLock(const std::filesystem::path& file) {
  using Opened = Result<std::shared_ptr<LockFile>>;
  const std::string name = file.filename().string();
  FileDescriptor descriptor(openRetrying(file));
  if (!descriptor.isOpen()) return Opened::failure(makePosixError(errno, "open " + name));
  if (flockRetrying(descriptor.get(), LOCK_EX | LOCK_NB) != 0) {
    return Opened::failure(makePosixError(errno, "lock " + name));
  }
  return Opened::success(std::shared_ptr<LockFile>(new LockFile(std::move(descriptor))));
}

Result<std::shared_ptr<LockFile>> LockFile::lock(const std::filesystem::path& file,
                                                 std::chrono::milliseconds patience,
                                                 std::chrono::milliseconds pause) {
  // Polls, because flock() has no time limit.
  const auto deadline = std::chrono::steady_clock::now() + patience;
  auto locked = tryLock(file);
  while (!locked.ok() && locked.error()->code() == EWOULDBLOCK) {
    if (std::chrono::steady_clock::now() >= deadline) {
      return Result<std::shared_ptr<LockFile>>::failure(makePosixError(
          EWOULDBLOCK, "lock " + file.filename().string() + ", held by " + holderOf(file)));
    }
    std::this_thread::sleep_for(pause);
    locked = tryLock(file);
  }
  return locked;
}

}  // namespace quenlet
