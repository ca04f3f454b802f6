#include "platform/ipc/UnixServiceListener.h"

#include <fcntl.h>
#include <sys/epoll.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <system_error>
#include <utility>

#include "platform/foundation/FreedMemory.h"
#include "platform/ipc/ErrorWire.h"
#include "platform/ipc/OutputQueue.h"
#include "platform/ipc/closeWithoutWaiting.h"
#include "platform/scheduling/attachedDescriptors.h"

namespace quenlet {

namespace {

constexpr std::size_t workerCount = 2;
// After accept() failed for lack of memory or descriptors.
constexpr double secondsToNextAttempt = 0.1;

// Best effort: the buffer of a new socket has room for so short a message.
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

// Which file is there; nothing but zeros for none.
std::pair<dev_t, ino_t> fileAt(const std::filesystem::path& path) {
  struct stat status {};
  if (::lstat(path.c_str(), &status) != 0) return {};
  return {status.st_dev, status.st_ino};
}

}  // namespace

UnixServiceListener::UnixServiceListener(
    std::string serviceName, std::shared_ptr<const EntitlementDatabase> entitlementDatabase,
    ServiceLimits serviceLimits, RequestAdmission::Begin beginTransaction,
    HandedSockets handedSockets)
    : name(std::move(serviceName)),
      context(std::make_shared<ServiceContext>()),
      handed(std::move(handedSockets)) {
  context->loop = loop;
  context->limits = serviceLimits;
  context->entitlements = std::move(entitlementDatabase);
  context->admission = std::make_shared<RequestAdmission>(std::move(beginTransaction));
  context->held = std::make_shared<HeldBytes>(
      serviceLimits.heldBytes,
      // Both are called where a connection holds its lock, so they only post.
      [this, posting = loop] { posting->post([this] { relieveMemory(); }); },
      // The allocator does not return freed memory by itself while some around it is in use.
      [posting = loop] { posting->post(returnFreedMemory); });
}

UnixServiceListener::~UnixServiceListener() {
  // The loop first: then nothing else touches the connections. They close before the workers end,
  // so that large requests still waiting for a worker are dropped.
  if (!thread.joinable()) return;
  loop->stop();
  thread.join();
  watch->cancel();
  for (const auto& entry : connections) entry.second->close();
  context->workers->shutDown();
  // While the name is still locked: afterwards the socket could be a successor's. A service manager
  // replaces it without taking the lock.
  if (!boundPath.empty() && fileAt(boundPath) == boundFile) ::unlink(boundPath.c_str());
}

void UnixServiceListener::setDelegate(std::weak_ptr<ServiceListenerDelegate> newDelegate) {
  MutexLock lock(mutex);
  delegate = std::move(newDelegate);
}

ErrorPtr UnixServiceListener::claimName() {
  if (nameLock) return nullptr;
  Result<ServiceAddress> found = ServiceAddress::forService(name);
  if (!found.ok()) return found.error();
  Result<std::shared_ptr<LockFile>> locked = LockFile::tryLock(found.value().lockPath());
  if (!locked.ok()) {
    if (locked.error()->code() != EWOULDBLOCK) return locked.error();
    return makeServiceError(ServiceErrorCode::nameTaken, "another process serves " + name);
  }
  listeningSocket = handed.takeListening(found.value());
  // The lock is ours, so a service manager listens. Clients could not reach it any more if we
  // replaced its file.
  if (!listeningSocket.isOpen() && found.value().hasListener()) {
    return makeServiceError(ServiceErrorCode::nameTaken,
                            "a service manager listens for " + name + ", and would start it");
  }
  wasHanded = listeningSocket.isOpen();
  address.emplace(std::move(found).takeValue());
  nameLock = std::move(locked).takeValue();
  return nullptr;
}

bool UnixServiceListener::mayHaveClients() const { return wasHanded; }

ErrorPtr UnixServiceListener::resume() {
  if (ErrorPtr error = claimName()) return error;
  if (ErrorPtr error = listen()) return error;
  spareDescriptor = openSpare();
  watch =
      loop->watch(listeningSocket.get(), EPOLLIN, [this](std::uint32_t) { acceptConnection(); });
  try {
    context->workers = std::make_shared<WorkerPool>(
        workerCount, [posting = loop](Block block) { posting->post(std::move(block)); });
    thread = std::thread([this] { loop->run(); });
  } catch (const std::system_error& failure) {
    watch->cancel();
    return makePosixError(failure.code().value(), "start the thread of " + name);
  }
  return nullptr;
}

ErrorPtr UnixServiceListener::listen() {
  if (!wasHanded) {
    if (ErrorPtr error = bindSocket()) return error;
  }
  const int socket = listeningSocket.get();
  if (::fcntl(socket, F_SETFL, O_NONBLOCK) != 0) return makePosixError(errno, "prepare a socket");
  // Clients that have connected to a handed socket by now may have attached descriptors.
  const bool mayHaveDescriptors = !refuseDescriptors(socket) || wasHanded;
  if (mayHaveDescriptors) context->patient = std::make_shared<PatientThread>();
  // A handed socket listens already. From now on clients see this process behind it.
  if (::listen(socket, SOMAXCONN) != 0) return makePosixError(errno, "listen to " + name);
  return nullptr;
}

ErrorPtr UnixServiceListener::bindSocket() {
  FileDescriptor socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
  if (!socket.isOpen()) return makePosixError(errno, "create a socket");
  // Nobody listens there: it was left by a listener that crashed.
  ::unlink(address->socketPath().c_str());
  // bind() gives the file the socket's mode: it is never accessible to others, not even briefly.
  if (::fchmod(socket.get(), 0600) != 0) return makePosixError(errno, "protect a socket");
  if (const int failure = address->bind(socket.get()); failure != 0) {
    return makePosixError(failure, "bind the socket of " + name);
  }
  boundPath = address->socketPath();
  boundFile = fileAt(boundPath);
  listeningSocket = std::move(socket);
  return nullptr;
}

// Accepts one at a time: the loop serves the other connections before it comes back for the next.
void UnixServiceListener::acceptConnection() {
  // Clients that still connect stay in the backlog until the socket is closed.
  if (context->admission->isSuspended()) return watch->setEvents(0);
  FileDescriptor accepted = acceptOne(listeningSocket);
  if (accepted.isOpen()) {
    admit(std::move(accepted));
  } else if (errno != EAGAIN && errno != EINTR && errno != ECONNABORTED) {
    refuseOne(errno);
  }
}

// A connection that cannot be accepted keeps the socket ready, and the loop would spin.
void UnixServiceListener::refuseOne(int failure) {
  if (failure == EMFILE && spareDescriptor.isOpen()) {
    spareDescriptor.reset();
    if (FileDescriptor refused = acceptOne(listeningSocket); refused.isOpen()) {
      refuse(std::move(refused));
    }
    spareDescriptor = openSpare();
    return;
  }
  // The system as a whole is short of something.
  watch->setEvents(0);
  nextAttempt = timers.afterDelay(secondsToNextAttempt, [this] { resumeAccepting(); });
}

void UnixServiceListener::refuse(FileDescriptor socket) {
  sayTooManyConnections(socket);
  closeWithoutWaiting(std::move(socket), context->patient.get());
}

void UnixServiceListener::resumeAccepting() {
  if (!spareDescriptor.isOpen()) spareDescriptor = openSpare();
  const auto awaited = std::exchange(nextAttempt, nullptr);
  if (!awaited) return;
  awaited->cancel();
  watch->setEvents(EPOLLIN);
}

// A socket that is still being closed occupies a descriptor.
bool UnixServiceListener::isFull() const {
  const std::size_t closing = context->patient ? context->patient->pendingBlocks() : 0;
  return connections.size() + closing >= context->limits.connections;
}

void UnixServiceListener::admit(FileDescriptor socket) {
  Result<PeerIdentity> peer = PeerIdentity::ofSocket(socket.get());
  const bool isOurs = peer.ok() && (peer.value().user == ::geteuid() || peer.value().user == 0);
  // Before isFull(): other users are told nothing.
  if (!isOurs) return closeWithoutWaiting(std::move(socket), context->patient.get());
  if (isFull()) return refuse(std::move(socket));
  std::shared_ptr<ServiceListenerDelegate> asked;
  {
    MutexLock lock(mutex);
    asked = delegate.lock();
  }
  if (!asked) return closeWithoutWaiting(std::move(socket), context->patient.get());
  auto connection = std::make_shared<UnixServiceConnection>(
      context, std::move(socket), std::move(peer).takeValue(),
      [this](UnixServiceConnection& closed) { connectionClosed(closed); });
  connections.emplace(connection.get(), connection);
  if (asked->shouldAcceptNewConnection(*this, connection)) {
    connection->start();
    // Most clients have sent a request by now; this saves them a round of the loop.
    connection->readAtOnce();
  } else {
    connection->close();
    connections.erase(connection.get());
  }
}

void UnixServiceListener::connectionClosed(UnixServiceConnection& connection) {
  connections.erase(&connection);
  resumeAccepting();
}

// Posted at every addition beyond the limit; most calls find nothing left to do.
void UnixServiceListener::relieveMemory() {
  while (context->held->isExceeded() && !connections.empty()) {
    const auto first = std::min_element(
        connections.begin(), connections.end(),
        [](const auto& a, const auto& b) { return a.second->standing() < b.second->standing(); });
    const std::shared_ptr<UnixServiceConnection> ended = first->second;
    ended->close();
    connectionClosed(*ended);
  }
}

}  // namespace quenlet
