#include "platform/ipc/UnixServiceConnection.h"

#include <sys/epoll.h>
#include <sys/socket.h>

#include <cerrno>
#include <utility>

#include "platform/ipc/PendingReply.h"
#include "platform/ipc/closeWithoutWaiting.h"
#include "platform/scheduling/attachedDescriptors.h"

namespace quenlet {

// From a request to its reply.
//
//   loop's thread                                   any thread
//   recv -> Input (FrameReader)
//        -> takeRequests() -- small --> perform() -> ExportedService -> ExportedObject
//                          -- large --> a worker: perform() ...           | PendingReply
//                                                                         v
//   sendmsg <- settle() <- ReplyWriter <----------- answer(), answerInPieces()
//                             ^-- sendPieces(), on a worker, as the peer reads
//
// The RequestAccount pauses reading when the peer must wait. What frees room, on any thread, ends
// with settle(), which writes, goes on reading, and ends the transaction, as each is due.
//
// The lock guards all but the input. It is not held while the exported object performs, or while it
// or a transaction is destroyed: they call out. Locals declared before a MutexLock are destroyed
// after it.

namespace {

// An estimate for the connection itself, with its interface and entitlement check.
constexpr std::size_t ownBytes = std::size_t{8} << 10;
// Closing a connection with less of an unfinished message would free too little.
constexpr std::size_t worthEndingBytes = std::size_t{64} << 10;
// After these, other connections get their turn on the worker.
constexpr int piecesInTurn = 4;

}  // namespace

// The bytes received and not yet performed. Outlives its connection while a worker reads it.
struct UnixServiceConnection::Input final {
  Input(std::size_t maximumMessageSize, std::shared_ptr<HeldBytes> heldBytesOfAll)
      // Other kinds of message are for clients.
      : reader(maximumMessageSize, FrameKind::request), held(std::move(heldBytesOfAll)) {
    count();
  }
  void count() { held.set(ownBytes + reader.capacityInBytes()); }

  FrameReader reader;
  HeldBytes::Part held;
  // Since when the reader holds part of a message.
  std::optional<std::chrono::steady_clock::time_point> unfinishedSince;
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
      output(*context, std::move(connectedSocket)),
      account(*context, output) {}

std::optional<PropertyList> UnixServiceConnection::valueForEntitlement(
    const std::string& entitlement) const {
  const PropertyList* held = entitlements ? findEntry(*entitlements, entitlement) : nullptr;
  return held == nullptr ? std::nullopt : std::optional(*held);
}

void UnixServiceConnection::setPeerTreatment(PeerTreatment treatment) {
  const bool isRefused = treatment == PeerTreatment::refused;
  input->reader.setMaximumMessageSize(isRefused ? limits.refusedMessageSizeInBytes
                                                : limits.messageSizeInBytes);
  MutexLock lock(mutex);
  exported.isRefused = isRefused;
}

void UnixServiceConnection::setExportedInterface(ServiceInterface interface) {
  MutexLock lock(mutex);
  exported.interface = std::make_shared<const ServiceInterface>(std::move(interface));
}

void UnixServiceConnection::setExportedObject(std::shared_ptr<ExportedObject> object) {
  // The former object is destroyed after the lock: its destructor is the service's code.
  MutexLock lock(mutex);
  exported.object.swap(object);
}

void UnixServiceConnection::resume() {
  MutexLock lock(mutex);
  resumed = true;
  updateWatch();
}

void UnixServiceConnection::start() {
  const auto whenReady = [weak = weak_from_this()](std::uint32_t events) {
    const auto held = weak.lock();
    if (!held) return;
    try {
      held->onReady(events);
    } catch (...) {
      // Out of memory for its message. If it stayed, the loop would try again for ever.
      held->closeByItself();
      throw;
    }
  };
  MutexLock lock(mutex);
  watch = context->loop->watch(output.socket(), awaitedEvents(), whenReady);
}

std::uint32_t UnixServiceConnection::awaitedEvents() const {
  // EPOLLERR is always reported; asking for it keeps the watch alive while nothing else is wanted.
  std::uint32_t events = EPOLLERR;
  // A turn that is about to follow ends the pause, so there is no need to tell the kernel of it.
  if (resumed && (!account.isPaused() || account.isContinuing())) events |= EPOLLIN;
  if (output.hasBytes()) events |= EPOLLOUT;
  return events;
}

void UnixServiceConnection::updateWatch() {
  if (watch) watch->setEvents(awaitedEvents());
}

void UnixServiceConnection::onReady(std::uint32_t events) {
  int socket = -1;
  bool reading = false;
  std::shared_ptr<ProcessTransaction> ended;
  {
    MutexLock lock(mutex);
    if ((events & EPOLLOUT) != 0) ended = settle();
    socket = output.socket();
    reading = resumed && !account.isPaused() && output.isOpen();
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
    input->count();
    takeRequests();
  } else if (count == 0 || (errno != EAGAIN && errno != EINTR)) {
    closeByItself();
  }
}

void UnixServiceConnection::takeRequests() {
  bool isUnderstood = true;
  bool isLeft = false;
  std::shared_ptr<ProcessTransaction> ended;
  // Before the account asks whether requests are still taken; see RequestAdmission::begin().
  std::shared_ptr<ProcessTransaction> begun = context->admission->begin();
  {
    MutexLock lock(mutex);
    if (!account.beginTurn(begun)) return;
  }
  while (isUnderstood && !isLeft) {
    const std::optional<FrameReader::Frame> frame = nextMessage();
    if (!frame) break;
    isUnderstood = frame->error == nullptr;
    isLeft = isUnderstood && leaveToWorker(*frame);
    if (!isLeft) perform(*frame);
  }
  {
    MutexLock lock(mutex);
    // Else the worker keeps the count.
    if (!isLeft) input->count();
    account.endTurn();
    ended = settle();
  }
  if (!input->reader.isEmpty() && !input->unfinishedSince)
    input->unfinishedSince = std::chrono::steady_clock::now();
  if (!isUnderstood) closeByItself();
}

// Nothing if no message is complete, or it must wait.
std::optional<FrameReader::Frame> UnixServiceConnection::nextMessage() {
  std::optional<FrameReader::Frame> frame = input->reader.next();
  MutexLock lock(mutex);
  if (!frame) {
    account.noneLeft();
    return std::nullopt;
  }
  if (!account.mayTake(exported.expectsLongReply(*frame))) {
    if (!frame->error) input->reader.putBack(*frame);
    return std::nullopt;
  }
  input->unfinishedSince.reset();
  // A failure with identifier 0 concerns the whole connection.
  if (!frame->error && frame->identifier == 0) {
    frame->error =
        makeServiceError(ServiceErrorCode::malformedMessage, "a request has no identifier");
  }
  return frame;
}

// Whether a worker performs the request. The reader, which has its bytes, is not touched meanwhile.
bool UnixServiceConnection::leaveToWorker(const FrameReader::Frame& frame) {
  if (!context->workers || frame.body.size() <= limits.quickRequestBytes) return false;
  {
    MutexLock lock(mutex);
    largeRequest = frame;
    account.beginLarge();
  }
  // Weak: a connection that ends before a worker is free releases the request at once.
  context->workers->post([weak = weak_from_this()] {
    if (const auto held = weak.lock()) held->performLargeRequest();
  });
  return true;
}

void UnixServiceConnection::performLargeRequest() {
  std::optional<FrameReader::Frame> request;
  std::shared_ptr<Input> performing;
  {
    MutexLock lock(mutex);
    request.swap(largeRequest);
    if (!request) return;
    performing = input;
    // Closing the connection would not free these bytes any sooner, so they do not count against
    // it. The number of workers limits them.
    performing->held.set(0);
  }
  try {
    perform(*request);
  } catch (const std::exception&) {
    giveUp();
  }
  performing = nullptr;
  std::shared_ptr<ProcessTransaction> ended;
  MutexLock lock(mutex);
  account.endLarge();
  ended = settle();
}

void UnixServiceConnection::perform(const FrameReader::Frame& frame) {
  ExportedService service;
  bool isLong = false;
  {
    MutexLock lock(mutex);
    service = exported;
    isLong = service.expectsLongReply(frame);
    account.addUnanswered(isLong);
  }
  const auto reply = std::make_shared<PendingReply>(shared_from_this(), frame.identifier, isLong);
  if (ErrorPtr error = service.perform(frame, limits, WireReply(reply))) reply->fail(error);
}

void UnixServiceConnection::answer(const PendingReply& pending, FrameKind kind, std::string body) {
  std::shared_ptr<ProcessTransaction> ended;
  MutexLock lock(mutex);
  account.removeUnanswered(pending.isLong);
  output.append(kind, pending.identifier, std::move(body));
  ended = settle();
}

void UnixServiceConnection::answerInPieces(const PendingReply& pending, EncodedReplyPtr reply) {
  std::shared_ptr<ProcessTransaction> ended;
  MutexLock lock(mutex);
  account.removeUnanswered(pending.isLong);
  output.append(pending.identifier, std::move(reply));
  ended = settle();
}

std::shared_ptr<ProcessTransaction> UnixServiceConnection::settle() {
  // Answers given during the turn are written together at its end.
  if (account.isInTurn() && context->loop->isLoopThread()) return nullptr;
  output.flush();
  if (output.claimPieces()) {
    // Weak: without any worker the loop would hold it, and the connection the loop.
    Block block = [weak = weak_from_this()] {
      if (const auto held = weak.lock()) held->sendPieces();
    };
    if (context->workers) {
      context->workers->post(std::move(block));
    } else {
      context->loop->post(std::move(block));
    }
  }
  if (account.claimContinuation()) {
    context->loop->post([weak = weak_from_this()] {
      if (const auto held = weak.lock()) held->takeRequests();
    });
  }
  updateWatch();
  return account.takeEndedTransaction();
}

void UnixServiceConnection::sendPieces() {
  try {
    for (int i = 0; i < piecesInTurn && sendPiece(); ++i) continue;
  } catch (const std::exception&) {
    giveUp();
  }
  std::shared_ptr<ProcessTransaction> ended;
  MutexLock lock(mutex);
  output.releasePieces();
  ended = settle();
}

// Encodes it without the lock. Whether there was one to send.
bool UnixServiceConnection::sendPiece() {
  std::optional<ReplyQueue::NextPiece> next;
  {
    MutexLock lock(mutex);
    next = output.nextPiece();
  }
  if (!next) return false;
  std::shared_ptr<const std::string> bytes = next->reply->piece(next->index);
  std::shared_ptr<ProcessTransaction> ended;
  MutexLock lock(mutex);
  output.addPiece(std::move(bytes));
  ended = settle();
  return true;
}

bool UnixServiceConnection::isOpen() {
  MutexLock lock(mutex);
  return output.isOpen();
}

void UnixServiceConnection::giveUp() {
  MutexLock lock(mutex);
  output.abandon();
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
    object.swap(exported.object);
    closing = output.close();
    abandonedRequests = account.takeEndedTransaction();
    largeRequest.reset();
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
  const std::size_t inputBytes = input->held.get();
  const bool holdsMuchUnfinished = input->unfinishedSince && inputBytes > worthEndingBytes;
  return {!exported.isRefused, holdsMuchUnfinished ? *input->unfinishedSince : Instant::max(),
          -static_cast<std::int64_t>(inputBytes + output.unsentBytes())};
}

}  // namespace quenlet
