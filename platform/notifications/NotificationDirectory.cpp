#include "platform/notifications/NotificationDirectory.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <cerrno>
#include <memory>
#include <optional>
#include <utility>

#include "platform/files/UserDirectories.h"

namespace quenlet {
namespace {

using SystemCall = int (*)(int descriptor, const sockaddr* address, socklen_t length);

std::optional<sockaddr_un> addressInDirectory(int directory, const std::string& name) {
  // For want of a bindat(), this path goes through the descriptor; it is short however deep the
  // directory is.
  const std::string path = "/proc/self/fd/" + std::to_string(directory) + "/" + name;
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  if (path.size() >= sizeof address.sun_path) return std::nullopt;
  path.copy(address.sun_path, path.size());
  return address;
}

// A new socket, bound or connected to `name` by `call`.
Result<FileDescriptor> openSocket(int directory, const std::string& name, SystemCall call,
                                  const char* action) {
  const std::optional<sockaddr_un> address = addressInDirectory(directory, name);
  if (!address) return Result<FileDescriptor>::failure(makePosixError(ENAMETOOLONG, action));
  FileDescriptor opened(::socket(AF_UNIX, SOCK_DGRAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0));
  if (!opened.isOpen() ||
      call(opened.get(), reinterpret_cast<const sockaddr*>(&*address), sizeof *address) != 0) {
    return Result<FileDescriptor>::failure(makePosixError(errno, action));
  }
  return Result<FileDescriptor>::success(std::move(opened));
}

bool isSocket(int directory, const dirent& entry) {
  if (entry.d_type != DT_UNKNOWN) return entry.d_type == DT_SOCK;
  struct stat status {};
  return ::fstatat(directory, entry.d_name, &status, AT_SYMLINK_NOFOLLOW) == 0 &&
         S_ISSOCK(status.st_mode);
}

}  // namespace

Result<NotificationDirectory> NotificationDirectory::open(const std::filesystem::path& path) {
  using Opened = Result<NotificationDirectory>;
  const std::string name = "the directory of notifications";
  for (const std::filesystem::path& directory : {path.parent_path(), path}) {
    if (ErrorPtr error = UserDirectories::ensurePrivateDirectory(directory, name)) {
      return Opened::failure(std::move(error));
    }
  }
  FileDescriptor opened(::open(path.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
  if (!opened.isOpen()) return Opened::failure(makePosixError(errno, "open " + name));
  return Opened::success(NotificationDirectory(std::move(opened)));
}

bool NotificationDirectory::isPrivateAt(const std::filesystem::path& path) const {
  struct stat status {};
  struct stat present {};
  return ::fstat(directory.get(), &status) == 0 && ::lstat(path.c_str(), &present) == 0 &&
         status.st_dev == present.st_dev && status.st_ino == present.st_ino &&
         status.st_uid == ::geteuid() && (status.st_mode & 0077) == 0;
}

std::vector<std::string> NotificationDirectory::socketNames() const {
  std::vector<std::string> names;
  // Opened anew: reading moves a position that a duplicate would share.
  FileDescriptor listing(::openat(directory.get(), ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (!listing.isOpen()) return names;
  const std::unique_ptr<DIR, int (*)(DIR*)> stream(::fdopendir(listing.get()), ::closedir);
  if (!stream) return names;
  static_cast<void>(listing.release());
  while (const dirent* entry = ::readdir(stream.get())) {
    if (isSocket(directory.get(), *entry)) names.emplace_back(entry->d_name);
  }
  return names;
}

Result<FileDescriptor> NotificationDirectory::bindSocket(const std::string& name) const {
  return openSocket(directory.get(), name, ::bind, "receive notifications");
}

Result<FileDescriptor> NotificationDirectory::connectSocket(const std::string& name) const {
  return openSocket(directory.get(), name, ::connect, "send a notification");
}

void NotificationDirectory::removeSocket(const std::string& name) const {
  ::unlinkat(directory.get(), name.c_str(), 0);
}

}  // namespace quenlet
