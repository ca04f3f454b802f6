#include "tools/owner/CollectLock.h"

#include <cerrno>

#include "platform/files/DonationFiles.h"
#include "platform/files/DurableDirectory.h"
#include "platform/files/PosixFileOperations.h"
#include "platform/files/UserDirectories.h"

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
  return LockFile::lock(file, patience);
}

}  // namespace quenlet
