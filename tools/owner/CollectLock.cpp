#include "tools/owner/CollectLock.h"

#include <fcntl.h>

#include <cerrno>

#include "platform/files/DonationFiles.h"
#include "platform/files/DurableDirectory.h"
#include "platform/files/PosixFileOperations.h"
#include "platform/files/UserDirectories.h"
#include "platform/foundation/FileDescriptor.h"

namespace quenlet {

Result<std::shared_ptr<LockFile>> CollectLock::take(const std::function<void()>& isWaiting) {
  using Taken = Result<std::shared_ptr<LockFile>>;
  const auto home = UserDirectories::homeDirectory();
  if (!home.ok()) return Taken::failure(home.error());
  const std::filesystem::path directory = home.value() / DonationFiles::directory;
  PosixFileOperations operations;
  if (const int failure = DurableDirectory::ensure(operations, directory)) {
    return Taken::failure(makePosixError(
        failure, "create the directory of " + std::string(DonationFiles::collectLock)));
  }
  const std::filesystem::path file = directory / DonationFiles::collectLock;
  auto taken = LockFile::tryLock(file);
  if (taken.ok() || taken.error()->code() != EWOULDBLOCK) return taken;
  isWaiting();
  return LockFile::lock(file, patience, std::chrono::milliseconds(500));
}

ErrorPtr CollectLock::leaveWord() {
  const auto directory = UserDirectories::runtimeDirectory();
  if (!directory.ok()) return directory.error();
  constexpr int flags = O_WRONLY | O_CREAT | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK;
  const FileDescriptor made(::open((directory.value() / word).c_str(), flags, 0600));
  return made.isOpen() ? nullptr : makePosixError(errno, "write " + std::string(word));
}

}  // namespace quenlet
