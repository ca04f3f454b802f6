#include "platform/ipc/UnixServiceConnection.h"

#include <sys/epoll.h>
#include <sys/socket.h>

#include <cerrno>
#include <utility>

#include "platform/ipc/ErrorWire.h"
#include "platform/ipc/PendingReply.h"
#include "platform/ipc/WireToken.h"
#include "platform/ipc/closeWithoutWaiting.h"
#include "platform/scheduling/receiveWithoutDescriptors.h"

namespace quenlet {

// From a request to its reply; the replies are in UnixServiceConnectionReplies.cpp.
//
//   loop's thread                                   any thread
//   recv -> Input (FrameReader)
//        -> dispatchFrames() -- small --> dispatch() -> perform() -> ExportedObject
//                            -- large --> a worker: dispatch() ...        | PendingReply
//                                                                         v
//   sendmsg <- flush() <- ReplyQueue <------------- answer(), answerInPieces()
//                             ^-- sendPieces(), on a worker, as the peer reads
//
// mustWait() is the back-pressure: with too many requests unanswered, too many bytes unsent or a
// large request open, `paused` stops reading, and continueSoon() resumes it. Code that frees room,
// on any thread, therefore calls continueSoon() before it lets go of the lock.
//
// The lock is not held while the exported object performs, or while it or a transaction is
// destroyed: they call out. Locals declared before a MutexLock are destroyed after it.

namespace {

// An estimate for the connection itself, with its interface and entitlement check.
constexpr std::size_t ownBytes = std::size_t{8} << 10;
// Closing a connection with less of an unfinished message would free too little.
constexpr std::size_t worthEndingBytes = std::size_t{64} << 10;

}  // namespace

// The bytes received and not yet performed. Outlives its connection while a worker reads it.
struct UnixServiceConnection::Input final {
  Input(std::size_t maximumMessageSize, const std::shared_ptr<HeldBytes>& heldBytesOfAll)
      : reader(maximumMessageSize), held(heldBytesOfAll) {
    held.set(ownBytes);
  }
  FrameReader reader;
  HeldBytes::Part held;
};

struct UnixServiceConnection::LargeRequest final {
  std::shared_ptr<Input> input;
  FrameReader::Frame frame;
};

UnixServiceConnection::UnixServiceConnection(std::shared_ptr<const ServiceContext> serviceContext,
                                             FileDescriptor connectedSocket,
                                             PeerIdentity peerIdentity, ClosedHandler closedHandler)
    : context(std::move(serviceContext)),
      limits(context->limits),
      peer(std::move(peerIdentity)),
      entitlements(peer.executable && context->entitlements
                       ? context->entitlements->entitlementsOf(*peer.executable)
                       : nullptr),
      onClosed(std::move(closedHandler)),
      input(std::make_shared<Input>(limits.messageSizeInBytes, context->held)),
      descriptor(std::move(connectedSocket)),
      output(limits.messageSizeInBytes),
      heldOutput(context->held) {}

std::optional<PropertyList> UnixServiceConnection::valueForEntitlement(
    const std::string& entitlement) const {
  const PropertyList* held = entitlements ? findEntry(*entitlements, entitlement) : nullptr;
  return held == nullptr ? std::nullopt : std::optional(*held);
}

void UnixServiceConnection::setPeerTreatment(PeerTreatment treatment) {
  isRefused = treatment == PeerTreatment::refused;
  input->reader.setMaximumMessageSize(isRefused ? limits.refusedMessageSizeInBytes
                                                : limits.messageSizeInBytes);
}

void UnixServiceConnection::setExportedInterface(ServiceInterface interface) {
  auto shared = std::make_shared<const ServiceInterface>(std::move(interface));
  MutexLock lock(mutex);
  exportedInterface.swap(shared);
}

void UnixServiceConnection::setExportedObject(std::shared_ptr<ExportedObject> object) {
  // The former object is destroyed after the lock: its destructor is the service's code.
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
  auto started =
      context->loop->watch(socket, events, [weak = weak_from_this()](std::uint32_t ready) {
        const auto held = weak.lock();
        if (!held) return;
        try {
          held->onReady(ready);
        } catch (...) {
          // Out of memory for its message. If it stayed, the loop would try again for ever.
          held->closeByItself();
          throw;
        }
      });
  // The wanted events may have changed since: without a watch, updateWatch() did nothing.
  MutexLock lock(mutex);
  watch = std::move(started);
  updateWatch();
}

std::uint32_t UnixServiceConnection::wantedEvents() const {
  // EPOLLERR is always reported; asking for it keeps the watch alive while nothing else is wanted.
  std::uint32_t events = EPOLLERR;
  if (resumed && !paused) events |= EPOLLIN;
  if (output.hasBytes()) events |= EPOLLOUT;
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
  // While reading is paused, only the peer's hang-up matters.
  if ((events & (EPOLLHUP | EPOLLERR)) != 0) closeByItself();
}

void UnixServiceConnection::readOnce(int socket) {
  // There is a patient thread only where the kernel lets peers attach descriptors to a message;
  // receiving those would use up ours.
  const std::span<char> room = input->reader.room();
  const ssize_t count = context->patient ? receiveWithoutDescriptors(socket, room)
                                         : ::recv(socket, room.data(), room.size(), MSG_DONTWAIT);
  if (count > 0) {
    input->reader.added(static_cast<std::size_t>(count));
    input->held.set(ownBytes + input->reader.capacityInBytes());
    dispatchFrames();
  } else if (count == 0 || (errno != EAGAIN && errno != EINTR)) {
    closeByItself();
  }
}

void UnixServiceConnection::continueReading() {
  {
    MutexLock lock(mutex);
    continuationPosted = false;
    if (!descriptor.isOpen() || largeRequestOpen) return;
    paused = false;
  }
  dispatchFrames();
}

// Whether another request may be dispatched; if not, reading pauses.
bool UnixServiceConnection::mayDispatch() {
  MutexLock lock(mutex);
  if (!descriptor.isOpen() || abandoned) return false;
  dispatching = true;
  nextIsLong = false;
  paused =
      mustWait() || requestsInTurn >= limits.requestsInTurn || context->admission->isSuspended();
  ++requestsInTurn;
  return !paused;
}

// Whether the peer must read answers first, or its large request must be performed.
bool UnixServiceConnection::mustWait() const {
  return largeRequestOpen || unanswered >= limits.unansweredRequests ||
         output.unsentBytes() >= limits.unsentBytesAhead ||
         (nextIsLong && unansweredLong + output.repliesInPieces() >= limits.longReplies);
}

void UnixServiceConnection::continueSoon() {
  if (!paused || dispatching || continuationPosted || mustWait() || !descriptor.isOpen()) return;
  if (context->admission->isSuspended()) return;
  continuationPosted = true;
  context->loop->post([weak = weak_from_this()] {
    if (const auto held = weak.lock()) held->continueReading();
  });
}

void UnixServiceConnection::dispatchFrames() {
  bool understood = true;
  requestsInTurn = 0;
  // Before mayDispatch() asks whether requests are still taken; see RequestAdmission::begin().
  std::shared_ptr<ProcessTransaction> begun = context->admission->begin();
  {
    MutexLock lock(mutex);
    if (!transaction) transaction.swap(begun);
  }
  while (understood && mayDispatch()) {
    const std::optional<FrameReader::Frame> frame = input->reader.next();
    if (!frame) break;
    unfinishedSince.reset();
    ErrorPtr error = frame->error;
    if (!error && frame->kind != FrameKind::request) {
      error = makeServiceError(ServiceErrorCode::malformedMessage, "a message is not a request");
    }
    if (!error && frame->identifier == 0) {
      // A failure with identifier 0 concerns the whole connection.
      error = makeServiceError(ServiceErrorCode::malformedMessage, "a request has no identifier");
    }
    understood = error == nullptr;
    if (!understood) {
      failSenseless(*frame, error);
    } else if (mustWaitWith(*frame)) {
      input->reader.putBack(*frame);
      break;
    } else if (!leaveToWorker(*frame)) {
      dispatch(*frame);
    }
  }
  noteUnfinishedMessage();
  finishBatch();
  if (!understood) closeByItself();
}

void UnixServiceConnection::noteUnfinishedMessage() {
  {
    MutexLock lock(mutex);
    // A worker with a large request keeps this count itself; see performLargeRequest().
    if (!largeRequestOpen) input->held.set(ownBytes + input->reader.capacityInBytes());
  }
  if (!input->reader.isEmpty() && !unfinishedSince)
    unfinishedSince = std::chrono::steady_clock::now();
}

void UnixServiceConnection::failSenseless(const FrameReader::Frame& frame, const ErrorPtr& error) {
  const bool isTooLarge =
      error->code() == static_cast<std::int64_t>(ServiceErrorCode::messageTooLarge);
  if (!isRefused || !isTooLarge || frame.kind != FrameKind::request || frame.identifier == 0) {
    return fail(frame.identifier, error);
  }
  // A refused peer's request is refused whatever its size, by the exported object, which only needs
  // the selector. That may have arrived.
  std::string_view rest = frame.body;
  const std::optional<WireToken> selector = WireToken::take(rest);
  if (selector && selector->type == WireType::string) {
    return perform(frame, std::string(selector->text), {});
  }
  fail(frame.identifier,
       makeServiceError(ServiceErrorCode::messageTooLarge,
                        "a program without entitlement may send messages of " +
                            std::to_string(limits.refusedMessageSizeInBytes) + " bytes"));
}

void UnixServiceConnection::finishBatch() {
  std::shared_ptr<ProcessTransaction> ended;
  MutexLock lock(mutex);
  dispatching = false;
  if (!descriptor.isOpen()) return;
  flush();
  ended = endedTransaction();
  // Reading may have paused because the turn was over, or another thread has made room since.
  continueSoon();
  updateWatch();
}

std::shared_ptr<ProcessTransaction> UnixServiceConnection::endedTransaction() {
  const bool isAnswering = output.unsentBytes() > 0 || output.repliesInPieces() > 0;
  if (dispatching || largeRequestOpen || unanswered > 0 || isAnswering) return nullptr;
  return std::exchange(transaction, nullptr);
}

// Whether the peer must read its long replies before this request; if so, reading pauses.
bool UnixServiceConnection::mustWaitWith(const FrameReader::Frame& frame) {
  std::string_view rest = frame.body;
  const std::optional<WireToken> selector = WireToken::take(rest);
  MutexLock lock(mutex);
  nextIsLong =
      selector && exportedInterface && exportedInterface->expectsLongReplies(selector->text);
  paused = mustWait();
  return paused;
}

// Whether a worker performs the request. Nothing is read meanwhile: its bytes are in the reader.
bool UnixServiceConnection::leaveToWorker(const FrameReader::Frame& frame) {
  if (!context->workers || frame.body.size() <= limits.quickRequestBytes) return false;
  {
    MutexLock lock(mutex);
    if (!descriptor.isOpen()) return true;
    largeRequest = std::make_shared<const LargeRequest>(LargeRequest{input, frame});
    largeRequestOpen = true;
    paused = true;
  }
  // Weak: a connection that ends before a worker is free releases the request at once.
  context->workers->post([weak = weak_from_this()] {
    if (const auto held = weak.lock()) held->performLargeRequest();
  });
  return true;
}

void UnixServiceConnection::performLargeRequest() {
  std::shared_ptr<const LargeRequest> request;
  {
    MutexLock lock(mutex);
    request.swap(largeRequest);
    if (!request) return;
    // Closing the connection would not free these bytes any sooner, so they do not count against
    // it. The number of workers limits them.
    request->input->held.set(0);
  }
  try {
    dispatch(request->frame);
  } catch (const std::exception&) {
    giveUp();
  }
  request = nullptr;
  std::shared_ptr<ProcessTransaction> ended;
  MutexLock lock(mutex);
  largeRequestOpen = false;
  ended = endedTransaction();
  continueSoon();
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
  if (isRefused) {
    arguments = {};
  } else if (ErrorPtr error = validateWireValues(arguments, *parameters)) {
    return fail(frame.identifier, error);
  }
  const bool isLong = interface->expectsLongReplies(selector);
  {
    MutexLock lock(mutex);
    ++unanswered;
    if (isLong) ++unansweredLong;
  }
  object->perform(
      selector, WireReader(arguments),
      WireReply(std::make_shared<PendingReply>(shared_from_this(), frame.identifier, isLong)));
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
    largeRequest = nullptr;
    output.clear();
    heldOutput.set(0);
  }
  // In this order: once the descriptor is closed, its number may belong to another connection.
  if (ended) ended->cancel();
  closeWithoutWaiting(std::move(closing), context->patient.get());
  // Frees the buffer now: unanswered requests keep the connection alive, but not its input.
  input = std::make_shared<Input>(limits.messageSizeInBytes, nullptr);
}

UnixServiceConnection::Standing UnixServiceConnection::standing() {
  using Instant = std::chrono::steady_clock::time_point;
  MutexLock lock(mutex);
  // Bytes that a worker has taken would not be freed by closing.
  const bool isBeingPerformed = largeRequestOpen && !largeRequest;
  const std::size_t inputBytes = isBeingPerformed ? 0 : input->held.get();
  const bool holdsMuchUnfinished = unfinishedSince && inputBytes > worthEndingBytes;
  return {!isRefused, holdsMuchUnfinished ? *unfinishedSince : Instant::max(),
          -static_cast<std::int64_t>(inputBytes + heldOutput.get())};
}

}  // namespace quenlet
