#include "platform/extensions/ExtensionConversation.h"

#include <sys/epoll.h>
#include <sys/ioctl.h>
#include <sys/socket.h>

#include <cerrno>
#include <span>
#include <string>
#include <utility>

#include "platform/extensions/DonorExtensionInterface.h"
#include "platform/extensions/ExtensionError.h"
#include "platform/ipc/ErrorWire.h"
#include "platform/ipc/ServiceInterface.h"
#include "platform/ipc/ServiceLimits.h"

namespace quenlet {
namespace {

constexpr std::size_t maximumMessageSize = ServiceLimits().messageSizeInBytes;
// No further request is encoded while this much is unsent.
constexpr std::size_t enoughUnsentBytes = std::size_t{1} << 20;

ErrorPtr badAnswer(const std::string& sentence) {
  return makeExtensionError(ExtensionErrorCode::badAnswer, "the extension's answer: " + sentence);
}

ErrorPtr readFailure(std::string_view body) {
  static const std::vector<WireParameter> parameters{
      {WireType::object, false, {ErrorWire::className}}};
  if (const ErrorPtr error = validateWireValues(body, parameters)) {
    return badAnswer(error->debugDescription());
  }
  WireReader values(body);
  return boundedDonorError(ErrorWire::decode(values));
}

void deliver(ExtensionRequest& request, FrameKind kind, std::string_view body) {
  static const ServiceInterface interface = makeDonorExtensionInterface();
  if (kind == FrameKind::failure) {
    request.fail(readFailure(body));
  } else if (const ErrorPtr error = validateWireValues(
                 body, *interface.parameters(request.operation(), OfReply::yes))) {
    request.fail(badAnswer(error->debugDescription()));
  } else {
    request.complete(Result<std::string>::success(std::string(body)));
  }
}

// Whether decoding the answer could hold up the loop's thread. Re-donations always count as long:
// on the serial background scheduler they keep their order.
bool isLong(const std::string& operation, std::string_view body) {
  constexpr std::size_t shortAnswerInBytes = std::size_t{16} << 10;
  return operation == DonorExtensionSelector::redonate || body.size() > shortAnswerInBytes;
}

}  // namespace

ExtensionConversation::ExtensionConversation(const ExtensionSchedulers& schedulers,
                                             FileDescriptor connectedSocket,
                                             std::size_t unansweredRequests, Events eventHandlers)
    : window(unansweredRequests),
      handlers(std::move(eventHandlers)),
      background(schedulers.background),
      socket(std::move(connectedSocket)),
      watch(schedulers.loop.watch(socket.get(), EPOLLIN,
                                  [this](std::uint32_t events) { onReady(events); })),
      reader(maximumMessageSize) {}

ExtensionConversation::~ExtensionConversation() { watch->cancel(); }

void ExtensionConversation::ask(ExtensionRequestPtr request) {
  waiting.push_back(std::move(request));
  send();
}

void ExtensionConversation::takeLastAnswers() {
  sending = false;
  // Reads the bytes that are there now, and then the end of the stream if it comes, but no more: a
  // child of the program may still have the socket and keep writing.
  int left = 0;
  if (socket.isOpen()) ::ioctl(socket.get(), FIONREAD, &left);
  while (left >= 0 && socket.isOpen()) {
    const std::size_t count = readOnce();
    if (count == 0) break;
    left -= static_cast<int>(count);
  }
  reportOutcome();
}

void ExtensionConversation::close(const ErrorPtr& reason) {
  watch->cancel();
  socket.reset();
  output.clear();
  std::vector<ExtensionRequestPtr> unanswered;
  for (auto& [identifier, request] : std::exchange(asked, {})) unanswered.push_back(request);
  for (ExtensionRequestPtr& request : std::exchange(waiting, {})) {
    unanswered.push_back(std::move(request));
  }
  ExtensionRequest::failAll(std::move(unanswered), reason, *background);
}

void ExtensionConversation::onReady(std::uint32_t events) {
  if ((events & (EPOLLIN | EPOLLHUP | EPOLLERR)) != 0) readOnce();
  send();
  reportOutcome();
}

std::size_t ExtensionConversation::readOnce() {
  if (fault) return 0;
  const std::span<char> room = reader.room();
  const ssize_t count = ::recv(socket.get(), room.data(), room.size(), MSG_DONTWAIT);
  if (count < 0 && (errno == EINTR || errno == EAGAIN)) return 0;
  if (count <= 0) {
    fault = makeExtensionError(ExtensionErrorCode::ended, "the extension ended the connection");
    return 0;
  }
  reader.added(static_cast<std::size_t>(count));
  takeAnswers();
  return static_cast<std::size_t>(count);
}

void ExtensionConversation::takeAnswers() {
  while (!fault) {
    const std::optional<FrameReader::Frame> frame = reader.next();
    if (!frame) break;
    fault = takeAnswer(*frame);
  }
}

ErrorPtr ExtensionConversation::takeAnswer(const FrameReader::Frame& frame) {
  if (frame.error) return badAnswer(frame.error->debugDescription());
  const auto found = asked.find(frame.identifier);
  if (frame.kind == FrameKind::request || found == asked.end()) {
    return badAnswer("nobody asked for it");
  }
  ExtensionRequestPtr request = std::move(found->second);
  asked.erase(found);
  hasAnswered = true;
  if (isLong(request->operation(), frame.body)) {
    background->performBlock([request = std::move(request), kind = frame.kind,
                              body = std::string(frame.body)] { deliver(*request, kind, body); });
  } else {
    deliver(*request, frame.kind, frame.body);
  }
  return nullptr;
}

void ExtensionConversation::send() {
  if (!socket.isOpen() || fault) return;
  while (sending && !waiting.empty() && asked.size() < window &&
         output.unsentBytes() < enoughUnsentBytes) {
    const ExtensionRequestPtr request = std::move(waiting.front());
    waiting.pop_front();
    sendOne(request);
  }
  // If writing fails, the program has closed its end; reading will tell that, after its answers.
  if (output.writeTo(socket.get()) == OutputQueue::Outcome::failed) output.clear();
  watch->setEvents(output.empty() ? EPOLLIN : EPOLLIN | EPOLLOUT);
}

void ExtensionConversation::sendOne(const ExtensionRequestPtr& request) {
  WireEncoder start;
  start.string(request->operation());
  std::string arguments = request->encodedArguments();
  // Counts as answered, so that the clock of the run is set for the next request.
  if (FrameHeader::countedBytes + start.bytes().size() + arguments.size() > maximumMessageSize) {
    hasAnswered = true;
    request->fail(makeServiceError(ServiceErrorCode::messageTooLarge,
                                   "the value is larger than a message may be"));
    return;
  }
  asked.emplace(++lastIdentifier, request);
  output.append(FrameKind::request, lastIdentifier, start.bytes(), std::move(arguments));
}

// Always called last: the handlers may close the conversation.
void ExtensionConversation::reportOutcome() {
  if (std::exchange(hasAnswered, false)) handlers.answered();
  if (fault && socket.isOpen()) handlers.broken(fault);
}

}  // namespace quenlet
