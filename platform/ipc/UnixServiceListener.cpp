#include "platform/ipc/UnixServiceListener.h"

#include <fcntl.h>
#include <sys/epoll.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <system_error>
#include <utility>

#include "platform/foundation/FreedMemory.h"
#include "platform/ipc/ErrorWire.h"
#include "platform/ipc/OutputQueue.h"
#include "platform/scheduling/refuseDescriptors.h"

namespace quenlet {

namespace {

// The socket's own buffer takes so short a message, or the peer goes without it.
void sayTooManyConnections(const FileDescriptor& socket) {
  WireEncoder encoder;
  ErrorWire::encode(encoder, makeServiceError(ServiceErrorCode::tooManyConnections,
                                              "the service has too many connections"));
  OutputQueue output;
  output.append(FrameKind::failure, 0, {}, std::move(encoder).take());
  [[maybe_unused]] const OutputQueue::Outcome outcome = output.writeTo(socket.get());
}

FileDescriptor openSpare() { return FileDescriptor(::open("/dev/null", O_RDONLY | O_CLOEXEC)); }

FileDescriptor acceptOne(const FileDescriptor& listening) {
  return FileDescriptor(::accept4(listening.get(), nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK));
}

}  // namespace

UnixServiceListener::UnixServiceListener(
    std::string serviceName, std::shared_ptr<const EntitlementDatabase> entitlementDatabase,
    ServiceLimits serviceLimits, RequestAdmission::Begin beginTransaction)
    : name(std::move(serviceName)),
      entitlements(std::move(entitlementDatabase)),
      limits(serviceLimits),
      admission(std::make_shared<RequestAdmission>(std::move(beginTransaction))),
      held(std::make_shared<HeldBytes>(
          limits.heldBytes, [this, loop = loop] { loop->post([this] { relieveMemory(); }); },
          // The allocator keeps what lies between things that are still in use.
          [loop = loop] { loop->post(returnFreedMemory); })) {}

UnixServiceListener::~UnixServiceListener() {
  if (!thread.joinable()) return;
  loop->stop();
  thread.join();
  watch->cancel();
  for (const auto& entry : connections) entry.second->close();
  ::unlink(socketPath.c_str());
}

void UnixServiceListener::setDelegate(std::weak_ptr<ServiceListenerDelegate> newDelegate) {
  MutexLock lock(mutex);
  delegate = std::move(newDelegate);
}

ErrorPtr UnixServiceListener::claimName() {
  if (nameLock) return nullptr;
  Result<ServiceAddress> found = ServiceAddress::forService(name);
  if (!found.isLeft()) return found.right();
  Result<std::shared_ptr<LockFile>> locked = LockFile::tryLock(found.left().lockPath());
  if (!locked.isLeft()) {
    if (locked.right()->code() != EWOULDBLOCK) return locked.right();
    return makeServiceError(ServiceErrorCode::nameTaken, "another process serves " + name);
  }
  address.emplace(std::move(found).takeLeft());
  nameLock = std::move(locked).takeLeft();
  return nullptr;
}

ErrorPtr UnixServiceListener::resume() {
  if (ErrorPtr error = claimName()) return error;
  if (ErrorPtr error = openSocket(*address)) return error;
  spareDescriptor = openSpare();
  watch =
      loop->watch(listeningSocket.get(), EPOLLIN, [this](std::uint32_t) { acceptConnection(); });
  try {
    thread = std::thread([this] { loop->run(); });
  } catch (const std::system_error& failure) {
    watch->cancel();
    return makePosixError(failure.code().value(), "start the thread of " + name);
  }
  return nullptr;
}

ErrorPtr UnixServiceListener::openSocket(const ServiceAddress& at) {
  FileDescriptor socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
  if (!socket.isOpen()) return makePosixError(errno, "create a socket");
  // Under the lock, what stands there was left by a listener that is no more.
  ::unlink(at.socketPath().c_str());
  // The file takes the socket's mode when it is bound.
  if (::fchmod(socket.get(), 0600) != 0) return makePosixError(errno, "protect a socket");
  if (const int failure = at.bind(socket.get()); failure != 0) {
    return makePosixError(failure, "bind the socket of " + name);
  }
  socketPath = at.socketPath();
  refuseDescriptors(socket.get());
  if (::listen(socket.get(), SOMAXCONN) != 0) return makePosixError(errno, "listen to " + name);
  listeningSocket = std::move(socket);
  return nullptr;
}

// One at a time: the loop comes back while more of them wait, and has served the others meanwhile.
void UnixServiceListener::acceptConnection() {
  // Who still comes waits for the end of the socket.
  if (admission->isSuspended()) return watch->setEvents(0);
  FileDescriptor accepted = acceptOne(listeningSocket);
  if (accepted.isOpen()) {
    admit(std::move(accepted));
  } else if (errno != EAGAIN && errno != EINTR && errno != ECONNABORTED) {
    refuseOne(errno);
  }
}

// Without a descriptor for it, the waiting connection would keep the socket ready for ever.
void UnixServiceListener::refuseOne(int failure) {
  if (failure == EMFILE && spareDescriptor.isOpen()) {
    spareDescriptor.reset();
    if (const FileDescriptor refused = acceptOne(listeningSocket); refused.isOpen()) {
      sayTooManyConnections(refused);
    }
    spareDescriptor = openSpare();
    return;
  }
  // The system as a whole is short of something. With connections, try again when one has ended;
  // with none, nobody else is kept waiting.
  if (connections.empty()) {
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    return;
  }
  acceptingPaused = true;
  watch->setEvents(0);
}

void UnixServiceListener::admit(FileDescriptor socket) {
  Result<PeerIdentity> peer = PeerIdentity::ofSocket(socket.get());
  if (!peer.isLeft()) return;
  if (const uid_t user = peer.left().user; user != ::geteuid() && user != 0) return;
  if (connections.size() >= limits.connections) return sayTooManyConnections(socket);
  std::shared_ptr<ServiceListenerDelegate> asked;
  {
    MutexLock lock(mutex);
    asked = delegate.lock();
  }
  if (!asked) return;
  auto connection = std::make_shared<UnixServiceConnection>(
      loop, std::move(socket), std::move(peer).takeLeft(), entitlements, limits,
      [this](UnixServiceConnection& closed) { connectionClosed(closed); }, held, admission);
  connections.emplace(connection.get(), connection);
  if (asked->shouldAcceptNewConnection(*this, connection)) {
    connection->start();
    // Most clients have sent their request by now.
    connection->readAtOnce();
  } else {
    connection->close();
    connections.erase(connection.get());
  }
}

void UnixServiceListener::connectionClosed(UnixServiceConnection& connection) {
  connections.erase(&connection);
  if (!spareDescriptor.isOpen()) spareDescriptor = openSpare();
  if (!std::exchange(acceptingPaused, false)) return;
  watch->setEvents(EPOLLIN);
}

void UnixServiceListener::relieveMemory() {
  while (held->isExceeded() && !connections.empty()) {
    const auto largest = std::max_element(
        connections.begin(), connections.end(),
        [](const auto& a, const auto& b) { return a.second->heldBytes() < b.second->heldBytes(); });
    const std::shared_ptr<UnixServiceConnection> ended = largest->second;
    ended->close();
    connectionClosed(*ended);
  }
}

}  // namespace quenlet
