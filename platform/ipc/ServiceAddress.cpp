#include "platform/ipc/ServiceAddress.h"

#include <fcntl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/time.h>

#include <cerrno>
#include <cstddef>
#include <cstring>

#include "platform/files/UserDirectories.h"

namespace quenlet {

namespace {

// connect() blocks while the service's backlog is full; the send timeout bounds that wait.
int limitWaiting(int socket, TimeLimit::Instant deadline) {
  const auto left = std::chrono::duration_cast<std::chrono::microseconds>(
      deadline - std::chrono::steady_clock::now());
  if (left.count() <= 0) return EAGAIN;
  const timeval limit{left.count() / 1'000'000, left.count() % 1'000'000};
  return ::setsockopt(socket, SOL_SOCKET, SO_SNDTIMEO, &limit, sizeof(limit)) == 0 ? 0 : errno;
}

}  // namespace

Result<ServiceAddress> ServiceAddress::forService(const std::string& serviceName) {
  const Result<std::filesystem::path> runtime = UserDirectories::runtimeDirectory();
  if (!runtime.ok()) return Result<ServiceAddress>::failure(runtime.error());
  std::filesystem::path directory = runtime.value() / "quenlet";
  if (ErrorPtr error =
          UserDirectories::ensurePrivateDirectory(directory, "the directory of the services")) {
    return Result<ServiceAddress>::failure(std::move(error));
  }
  return Result<ServiceAddress>::success(ServiceAddress(std::move(directory), serviceName));
}

int ServiceAddress::resolve(sockaddr_un& address, FileDescriptor& opened) const {
  address = {};
  address.sun_family = AF_UNIX;
  std::string path = socketPath().native();
  // sun_path has 108 bytes. A descriptor of the directory gives a longer path a short name.
  if (path.size() >= sizeof(address.sun_path)) {
    opened = FileDescriptor(::open(directory.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
    if (!opened.isOpen()) return errno;
    path = "/proc/self/fd/" + std::to_string(opened.get()) + "/" + name;
  }
  if (path.size() >= sizeof(address.sun_path)) return ENAMETOOLONG;
  std::memcpy(address.sun_path, path.data(), path.size());
  return 0;
}

int ServiceAddress::bind(int socket) const {
  sockaddr_un address;
  FileDescriptor opened;
  if (const int failure = resolve(address, opened); failure != 0) return failure;
  return ::bind(socket, reinterpret_cast<const sockaddr*>(&address), sizeof(address)) == 0 ? 0
                                                                                           : errno;
}

int ServiceAddress::connect(int socket, TimeLimit::Instant deadline) const {
  sockaddr_un address;
  FileDescriptor opened;
  if (const int failure = resolve(address, opened); failure != 0) return failure;
  while (true) {
    if (const int failure = limitWaiting(socket, deadline); failure != 0) return failure;
    if (::connect(socket, reinterpret_cast<const sockaddr*>(&address), sizeof(address)) == 0) {
      return 0;
    }
    if (errno != EINTR) return errno;
  }
}

bool ServiceAddress::isWhereBound(int socket) const {
  sockaddr_un bound{};
  socklen_t size = sizeof(bound);
  if (::getsockname(socket, reinterpret_cast<sockaddr*>(&bound), &size) != 0) return false;
  if (size <= offsetof(sockaddr_un, sun_path)) return false;
  // The longest path has no zero at its end.
  const std::string path(bound.sun_path, ::strnlen(bound.sun_path, sizeof(bound.sun_path)));
  struct stat theirs {};
  struct stat ours {};
  // A relative path depends on the working directory of the process that bound it.
  return path.starts_with('/') && ::lstat(path.c_str(), &theirs) == 0 &&
         ::lstat(socketPath().c_str(), &ours) == 0 && S_ISSOCK(ours.st_mode) &&
         theirs.st_dev == ours.st_dev && theirs.st_ino == ours.st_ino;
}

bool ServiceAddress::hasListener() const {
  constexpr std::chrono::seconds patience(1);
  const FileDescriptor socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
  const int failure = connect(socket.get(), TimeLimit(patience).deadline());
  // Any other failure, such as a full queue or a socket of another type, may hide a listener.
  return failure != ENOENT && failure != ECONNREFUSED;
}

}  // namespace quenlet
