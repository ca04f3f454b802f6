#include "platform/ipc/ServiceConnector.h"

#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>

#include "platform/ipc/ServiceAddress.h"
#include "platform/ipc/ServiceInterface.h"

namespace quenlet {
namespace {

using Connected = Result<FileDescriptor>;

Connected noService(const std::string& name) {
  return Connected::failure(
      makeServiceError(ServiceErrorCode::noService, "nobody listens under " + name));
}

// The directory is private to the user; this check is for one that somebody planted in its place.
bool isTrusted(const FileDescriptor& socket) {
  ucred credentials{};
  socklen_t size = sizeof(credentials);
  if (::getsockopt(socket.get(), SOL_SOCKET, SO_PEERCRED, &credentials, &size) != 0) return false;
  return credentials.uid == ::geteuid() || credentials.uid == 0;
}

}  // namespace

Result<FileDescriptor> connectToService(const std::string& serviceName, const TimeLimit& limit) {
  const Result<ServiceAddress> address = ServiceAddress::forService(serviceName);
  if (!address.ok()) return Connected::failure(address.error());
  FileDescriptor socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
  if (!socket.isOpen()) return Connected::failure(makePosixError(errno, "create a socket"));
  const int failure = address.value().connect(socket.get(), limit.deadline());
  if (failure == ENOENT || failure == ECONNREFUSED) return noService(serviceName);
  if (failure == EAGAIN) return Connected::failure(limit.passed());
  if (failure != 0) {
    return Connected::failure(makePosixError(failure, "connect to " + serviceName));
  }
  if (!isTrusted(socket)) return noService(serviceName);
  return Connected::success(std::move(socket));
}

}  // namespace quenlet
