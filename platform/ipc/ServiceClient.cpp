#include "platform/ipc/ServiceClient.h"

#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>
#include <utility>

#include "platform/ipc/ClientChannel.h"
#include "platform/ipc/ServiceAddress.h"

namespace quenlet {

namespace {

using Connected = Result<std::shared_ptr<ServiceClient>>;

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

Connected ServiceClient::connect(const std::string& serviceName, ServiceInterface interface,
                                 Patience patience) {
  const Result<ServiceAddress> address = ServiceAddress::forService(serviceName);
  if (!address.ok()) return Connected::failure(address.error());
  FileDescriptor socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
  if (!socket.isOpen()) return Connected::failure(makePosixError(errno, "create a socket"));
  const TimeLimit limit(patience.first);
  const int failure = address.value().connect(socket.get(), limit.deadline());
  if (failure == ENOENT || failure == ECONNREFUSED) return noService(serviceName);
  if (failure == EAGAIN) return Connected::failure(limit.passed());
  if (failure != 0) {
    return Connected::failure(makePosixError(failure, "connect to " + serviceName));
  }
  if (!isTrusted(socket)) return noService(serviceName);
  return Connected::success(withConnectedSocket(std::move(socket), std::move(interface), patience));
}

std::shared_ptr<ServiceClient> ServiceClient::withConnectedSocket(FileDescriptor socket,
                                                                  ServiceInterface interface,
                                                                  Patience patience) {
  return std::shared_ptr<ServiceClient>(new ServiceClient(
      std::make_shared<ClientChannel>(std::move(socket), std::move(interface), patience)));
}

ServiceClient::ServiceClient(std::shared_ptr<ClientChannel> connectedChannel)
    : channel(std::move(connectedChannel)) {}

ServiceClient::~ServiceClient() {
  channel->stop();
  MutexLock lock(mutex);
  if (!thread.joinable()) return;
  // A completion can drop the last reference. Its thread cannot join itself; it shares the channel
  // and returns from runCompletions() by itself.
  if (thread.get_id() == std::this_thread::get_id()) {
    thread.detach();
  } else {
    thread.join();
  }
}

void ServiceClient::call(const std::string& selector, std::string encodedArguments,
                         Completion completion) {
  try {
    MutexLock lock(mutex);
    if (!thread.joinable()) thread = std::thread([held = channel] { held->runCompletions(); });
  } catch (const std::system_error& failure) {
    completion(Result<std::string>::failure(
        makePosixError(failure.code().value(), "start a thread for replies")));
    return;
  }
  channel->call(selector, std::move(encodedArguments), std::move(completion));
}

Result<std::string> ServiceClient::callSynchronously(const std::string& selector,
                                                     std::string encodedArguments) {
  return channel->callAndWait(selector, std::move(encodedArguments));
}

bool ServiceClient::isBroken() const { return channel->isBroken(); }

}  // namespace quenlet
