#include "platform/ipc/ServiceAddress.h"

#include <fcntl.h>
#include <sys/socket.h>

#include <cerrno>
#include <cstring>

#include "platform/files/UserDirectories.h"

namespace quenlet {

Result<ServiceAddress> ServiceAddress::forService(const std::string& serviceName) {
  const Result<std::filesystem::path> runtime = UserDirectories::runtimeDirectory();
  if (!runtime.isLeft()) return Result<ServiceAddress>::right(runtime.right());
  std::filesystem::path directory = runtime.left() / "quenlet";
  if (ErrorPtr error =
          UserDirectories::ensurePrivateDirectory(directory, "the directory of the services")) {
    return Result<ServiceAddress>::right(std::move(error));
  }
  return Result<ServiceAddress>::left(ServiceAddress(std::move(directory), serviceName));
}

int ServiceAddress::resolve(sockaddr_un& address, FileDescriptor& opened) const {
  address = {};
  address.sun_family = AF_UNIX;
  std::string path = socketPath().native();
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

int ServiceAddress::connect(int socket) const {
  sockaddr_un address;
  FileDescriptor opened;
  if (const int failure = resolve(address, opened); failure != 0) return failure;
  while (::connect(socket, reinterpret_cast<const sockaddr*>(&address), sizeof(address)) != 0) {
    if (errno != EINTR) return errno;
  }
  return 0;
}

}  // namespace quenlet
