#include "platform/ipc/UnixServiceConnection.h"

#include <sys/epoll.h>
#include <sys/socket.h>

#include <atomic>
#include <cerrno>
#include <utility>

#include "platform/ipc/ErrorWire.h"
#include "platform/ipc/WireToken.h"

namespace quenlet {

namespace {

// The connection itself, with its interface and gate.
constexpr std::size_t ownBytes = std::size_t{8} << 10;

}  // namespace

// The right to answer one request. The last copy to go without having used it tells the caller.
class UnixServiceConnection::PendingReply final {
 public:
  PendingReply(std::shared_ptr<UnixServiceConnection> asked, std::uint64_t request)
      : connection(std::move(asked)), identifier(request) {}
  PendingReply(const PendingReply&) = delete;
  PendingReply& operator=(const PendingReply&) = delete;
  ~PendingReply() {
    if (used.exchange(true)) return;
    try {
      WireEncoder encoder;
      ErrorWire::encode(encoder, makeServiceError(ServiceErrorCode::noReply,
                                                  "the request was dropped without an answer"));
      connection->answer(FrameKind::failure, identifier, std::move(encoder).take());
    } catch (const std::exception&) {
      connection->giveUp();
    }
  }

  void send(std::string encodedValues) {
    if (used.exchange(true)) return;
    connection->answer(FrameKind::reply, identifier, std::move(encodedValues));
  }

 private:
  const std::shared_ptr<UnixServiceConnection> connection;
  const std::uint64_t identifier;
  std::atomic<bool> used = false;
};

UnixServiceConnection::UnixServiceConnection(
    std::shared_ptr<EventLoop> eventLoop, FileDescriptor connectedSocket, PeerIdentity peerIdentity,
    const std::shared_ptr<const EntitlementDatabase>& entitlementDatabase,
    ServiceLimits serviceLimits, ClosedHandler closedHandler,
    const std::shared_ptr<HeldBytes>& heldBytesOfAll,
    std::shared_ptr<const RequestAdmission> requestAdmission)
    : loop(std::move(eventLoop)),
      peer(std::move(peerIdentity)),
      entitlements(peer.executable && entitlementDatabase
                       ? entitlementDatabase->entitlementsOf(*peer.executable)
                       : nullptr),
      limits(serviceLimits),
      onClosed(std::move(closedHandler)),
      admission(std::move(requestAdmission)),
      reader(limits.messageSizeInBytes),
      heldInput(heldBytesOfAll),
      descriptor(std::move(connectedSocket)),
      heldOutput(heldBytesOfAll) {
  heldInput.set(ownBytes);
}

std::optional<PropertyList> UnixServiceConnection::valueForEntitlement(
    const std::string& entitlement) const {
  const PropertyList* held = entitlements ? findEntry(*entitlements, entitlement) : nullptr;
  return held == nullptr ? std::nullopt : std::optional(*held);
}

void UnixServiceConnection::setExportedInterface(ServiceInterface interface) {
  auto shared = std::make_shared<const ServiceInterface>(std::move(interface));
  MutexLock lock(mutex);
  exportedInterface.swap(shared);
}

void UnixServiceConnection::setExportedObject(std::shared_ptr<ExportedObject> object) {
  // A replaced object goes after the lock, as its end is code of the service's.
  MutexLock lock(mutex);
  exportedObject.swap(object);
}

void UnixServiceConnection::resume() {
  MutexLock lock(mutex);
  resumed = true;
  updateWatch();
}

void UnixServiceConnection::start() {
  int socket = -1;
  std::uint32_t events = 0;
  {
    MutexLock lock(mutex);
    socket = descriptor.get();
    events = wantedEvents();
  }
  auto started = loop->watch(socket, events, [weak = weak_from_this()](std::uint32_t ready) {
    const auto held = weak.lock();
    if (!held) return;
    try {
      held->onReady(ready);
    } catch (...) {
      // Not enough memory for its message: it would be tried again for ever.
      held->closeByItself();
      throw;
    }
  });
  MutexLock lock(mutex);
  watch = std::move(started);
  updateWatch();
}

std::uint32_t UnixServiceConnection::wantedEvents() const {
  // EPOLLERR is always reported; asking for it keeps the watch alive while nothing else is wanted.
  std::uint32_t events = EPOLLERR;
  if (resumed && !paused) events |= EPOLLIN;
  if (!output.empty()) events |= EPOLLOUT;
  return events;
}

void UnixServiceConnection::updateWatch() {
  if (watch) watch->setEvents(wantedEvents());
}

void UnixServiceConnection::onReady(std::uint32_t events) {
  int socket = -1;
  bool reading = false;
  std::shared_ptr<ProcessTransaction> ended;
  {
    MutexLock lock(mutex);
    if (!descriptor.isOpen()) return;
    if ((events & EPOLLOUT) != 0) {
      flush();
      ended = endedTransaction();
      continueSoon();
      updateWatch();
    }
    socket = descriptor.get();
    reading = resumed && !paused && !abandoned;
  }
  if (reading && (events & (EPOLLIN | EPOLLHUP | EPOLLERR)) != 0) return readOnce(socket);
  // While it is not read, the socket is watched for nothing but the peer's end.
  if ((events & (EPOLLHUP | EPOLLERR)) != 0) closeByItself();
}

void UnixServiceConnection::readOnce(int socket) {
  const std::span<char> room = reader.room();
  // Plain recv: descriptors that a peer attaches are dropped by the kernel.
  const ssize_t count = ::recv(socket, room.data(), room.size(), MSG_DONTWAIT);
  if (count > 0) {
    reader.added(static_cast<std::size_t>(count));
    heldInput.set(ownBytes + reader.capacityInBytes());
    dispatchFrames();
  } else if (count == 0 || (errno != EAGAIN && errno != EINTR)) {
    closeByItself();
  }
}

void UnixServiceConnection::continueReading() {
  {
    MutexLock lock(mutex);
    continuationPosted = false;
    if (!descriptor.isOpen()) return;
    paused = false;
  }
  dispatchFrames();
}

// Answers whether another request may be dispatched; otherwise reading pauses.
bool UnixServiceConnection::mayDispatch() {
  MutexLock lock(mutex);
  if (!descriptor.isOpen() || abandoned) return false;
  dispatching = true;
  paused = mustWait() || requestsInTurn >= limits.requestsInTurn || admission->isSuspended();
  ++requestsInTurn;
  return !paused;
}

// Whether the peer has to take answers first.
bool UnixServiceConnection::mustWait() const {
  return unanswered >= limits.unansweredRequests || output.unsentBytes() >= limits.unsentBytesAhead;
}

void UnixServiceConnection::continueSoon() {
  if (!paused || dispatching || continuationPosted || mustWait() || !descriptor.isOpen()) return;
  if (admission->isSuspended()) return;
  continuationPosted = true;
  loop->post([weak = weak_from_this()] {
    if (const auto held = weak.lock()) held->continueReading();
  });
}

void UnixServiceConnection::dispatchFrames() {
  bool understood = true;
  requestsInTurn = 0;
  // Before mayDispatch() asks whether requests are still taken.
  std::shared_ptr<ProcessTransaction> begun = admission->begin();
  {
    MutexLock lock(mutex);
    if (!transaction) transaction.swap(begun);
  }
  while (understood && mayDispatch()) {
    const std::optional<FrameReader::Frame> frame = reader.next();
    if (!frame) break;
    ErrorPtr error = frame->error;
    if (!error && frame->kind != FrameKind::request) {
      error = makeServiceError(ServiceErrorCode::malformedMessage, "a message is not a request");
    }
    if (!error && frame->identifier == 0) {
      // Its answer would read as a failure of the whole connection.
      error = makeServiceError(ServiceErrorCode::malformedMessage, "a request has no identifier");
    }
    understood = error == nullptr;
    if (understood) {
      dispatch(*frame);
    } else {
      fail(frame->identifier, error);
    }
  }
  heldInput.set(ownBytes + reader.capacityInBytes());
  finishBatch();
  if (!understood) closeByItself();
}

void UnixServiceConnection::finishBatch() {
  std::shared_ptr<ProcessTransaction> ended;
  MutexLock lock(mutex);
  dispatching = false;
  if (!descriptor.isOpen()) return;
  flush();
  ended = endedTransaction();
  // The turn was over, or an answer of another thread has made room since.
  continueSoon();
  updateWatch();
}

std::shared_ptr<ProcessTransaction> UnixServiceConnection::endedTransaction() {
  if (dispatching || unanswered > 0 || !output.empty()) return nullptr;
  return std::exchange(transaction, nullptr);
}

void UnixServiceConnection::dispatch(const FrameReader::Frame& frame) {
  std::string_view rest = frame.body;
  const std::optional<WireToken> selector = WireToken::take(rest);
  if (!selector || selector->type != WireType::string) {
    return fail(frame.identifier, makeServiceError(ServiceErrorCode::malformedMessage,
                                                   "a request does not begin with its operation"));
  }
  perform(frame, std::string(selector->text), rest);
}

void UnixServiceConnection::perform(const FrameReader::Frame& frame, const std::string& selector,
                                    std::string_view arguments) {
  std::shared_ptr<const ServiceInterface> interface;
  std::shared_ptr<ExportedObject> object;
  {
    MutexLock lock(mutex);
    interface = exportedInterface;
    object = exportedObject;
  }
  const auto* parameters = interface ? interface->parameters(selector, OfReply::no) : nullptr;
  if (parameters == nullptr || !object) {
    return fail(frame.identifier, makeServiceError(ServiceErrorCode::unknownOperation,
                                                   "the service has no such operation"));
  }
  if (ErrorPtr error = validateWireValues(arguments, *parameters)) {
    return fail(frame.identifier, error);
  }
  {
    MutexLock lock(mutex);
    ++unanswered;
  }
  auto pending = std::make_shared<PendingReply>(shared_from_this(), frame.identifier);
  object->perform(selector, WireReader(arguments),
                  [pending = std::move(pending)](std::string encodedValues) {
                    pending->send(std::move(encodedValues));
                  });
}

void UnixServiceConnection::fail(std::uint64_t identifier, const ErrorPtr& error) {
  WireEncoder encoder;
  ErrorWire::encode(encoder, error);
  MutexLock lock(mutex);
  enqueue(FrameKind::failure, identifier, std::move(encoder).take());
}

void UnixServiceConnection::answer(FrameKind kind, std::uint64_t identifier, std::string body) {
  if (body.size() + FrameHeader::countedBytes > limits.messageSizeInBytes) {
    WireEncoder encoder;
    ErrorWire::encode(encoder, makeServiceError(ServiceErrorCode::messageTooLarge,
                                                "the reply is larger than a message may be"));
    kind = FrameKind::failure;
    body = std::move(encoder).take();
  }
  std::shared_ptr<ProcessTransaction> ended;
  MutexLock lock(mutex);
  --unanswered;
  enqueue(kind, identifier, std::move(body));
  if (!dispatching || !loop->isLoopThread()) {
    flush();
    if (!output.empty()) updateWatch();
  }
  ended = endedTransaction();
  continueSoon();
}

void UnixServiceConnection::enqueue(FrameKind kind, std::uint64_t identifier, std::string body) {
  if (!descriptor.isOpen() || abandoned) return;
  output.append(kind, identifier, {}, std::move(body));
  heldOutput.set(output.unsentBytes());
  if (output.unsentBytes() <= limits.unsentBytes) return;
  // It may be that the socket has room and nobody has tried yet.
  flush();
  if (output.unsentBytes() > limits.unsentBytes) abandon();
}

void UnixServiceConnection::flush() {
  if (!descriptor.isOpen() || output.empty()) return;
  if (output.writeTo(descriptor.get()) == OutputQueue::Outcome::failed) abandon();
  heldOutput.set(output.unsentBytes());
}

// Shutting the socket down makes it ready, so that the loop's thread closes it.
void UnixServiceConnection::abandon() {
  abandoned = true;
  output.clear();
  heldOutput.set(0);
  ::shutdown(descriptor.get(), SHUT_RDWR);
}

void UnixServiceConnection::giveUp() {
  MutexLock lock(mutex);
  if (descriptor.isOpen() && !abandoned) abandon();
}

void UnixServiceConnection::closeByItself() {
  close();
  onClosed(*this);
}

void UnixServiceConnection::close() {
  std::shared_ptr<EventLoop::Watch> ended;
  std::shared_ptr<ExportedObject> object;
  std::shared_ptr<ProcessTransaction> abandonedRequests;
  FileDescriptor closing;
  {
    MutexLock lock(mutex);
    ended.swap(watch);
    abandonedRequests.swap(transaction);
    object.swap(exportedObject);
    closing = std::move(descriptor);
    output.clear();
    heldOutput.set(0);
  }
  if (ended) ended->cancel();
  // Requests that are not answered yet keep the connection, but need nothing of this.
  reader = FrameReader(limits.messageSizeInBytes);
  heldInput.set(0);
}

std::size_t UnixServiceConnection::heldBytes() {
  MutexLock lock(mutex);
  return heldInput.get() + heldOutput.get();
}

}  // namespace quenlet
