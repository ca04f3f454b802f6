#include "platform/ipc/ClientChannel.h"

#include <poll.h>
#include <sys/socket.h>

#include <cerrno>

#include "platform/ipc/ErrorWire.h"

namespace quenlet {

namespace {

// Of one reply in parts: more than the file that the service keeps its data in can have.
constexpr std::size_t maximumReplySize = std::size_t{1} << 30;

ErrorPtr connectionBroken() {
  return makeServiceError(ServiceErrorCode::connectionBroken, "the service ended the connection");
}

Result<std::string> failed(ErrorPtr error) { return Result<std::string>::right(std::move(error)); }

ErrorPtr decodeFailure(std::string_view body) {
  static const std::vector<WireParameter> parameters{
      {WireType::object, false, {ErrorWire::className}}};
  if (ErrorPtr error = validateWireValues(body, parameters)) return error;
  WireReader values(body);
  return ErrorWire::decode(values);
}

// `parts` came before the message.
Result<std::string> decodeReply(const FrameReader::Frame& frame, std::string parts,
                                const std::vector<WireParameter>& parameters) {
  if (frame.kind == FrameKind::failure) return failed(decodeFailure(frame.body));
  std::string values = std::move(parts.append(frame.body));
  if (ErrorPtr error = validateWireValues(values, parameters)) return failed(std::move(error));
  return Result<std::string>::left(std::move(values));
}

}  // namespace

ClientChannel::ClientChannel(FileDescriptor connectedSocket, ServiceInterface serviceInterface,
                             TimeLimit timeLimit)
    : interface(std::move(serviceInterface)),
      limit(timeLimit),
      socket(std::move(connectedSocket)) {}

void ClientChannel::call(const std::string& selector, std::string encodedArguments,
                         Completion completion) {
  MutexLock lock(mutex);
  if (ErrorPtr error = send(selector, std::move(encodedArguments), nullptr, completion)) {
    completed.emplace_back(std::move(completion), failed(std::move(error)));
  }
  changed.notifyAll();
}

Result<std::string> ClientChannel::callAndWait(const std::string& selector,
                                               std::string encodedArguments) {
  std::optional<Reply> reply;
  MutexLock lock(mutex);
  if (ErrorPtr error = send(selector, std::move(encodedArguments), &reply, nullptr)) {
    return failed(std::move(error));
  }
  while (!reply) {
    if (reading) {
      waitForChange();
    } else {
      takeReadingOver();
    }
  }
  return *std::move(reply);
}

void ClientChannel::runCompletions() {
  MutexLock lock(mutex);
  while (!stopping || !completed.empty() || requestsWithCompletion > 0) {
    if (!completed.empty()) {
      std::vector<std::pair<Completion, Reply>> batch;
      batch.swap(completed);
      mutex.unlock();
      for (auto& [completion, reply] : batch) completion(std::move(reply));
      // What the completions own goes before the lock is taken again.
      batch.clear();
      mutex.lock();
    } else if (!reading && requestsWithCompletion > 0) {
      takeReadingOver();
    } else {
      waitForChange();
    }
  }
}

bool ClientChannel::isBroken() {
  {
    MutexLock lock(mutex);
    if (broken) return true;
  }
  // Nobody reads while nothing is awaited, so that the end may still be unread.
  pollfd look{socket.get(), POLLRDHUP, 0};
  return ::poll(&look, 1, 0) > 0;
}

void ClientChannel::stop() {
  MutexLock lock(mutex);
  stopping = true;
  breakConnection(connectionBroken());
}

ErrorPtr ClientChannel::send(const std::string& selector, std::string encodedArguments,
                             std::optional<Reply>* awaited, Completion completion) {
  if (broken) return broken;
  const auto* replyParameters = interface.parameters(selector, OfReply::yes);
  if (replyParameters == nullptr) {
    return makeServiceError(ServiceErrorCode::unknownOperation, "there is no such operation");
  }
  WireEncoder start;
  start.string(selector);
  if (FrameHeader::countedBytes + start.bytes().size() + encodedArguments.size() >
      maximumMessageSize) {
    return makeServiceError(ServiceErrorCode::messageTooLarge,
                            "the request is larger than a message may be");
  }
  const std::uint64_t identifier = ++lastIdentifier;
  if (completion) ++requestsWithCompletion;
  const TimeLimit::Instant deadline = limit.deadline();
  requests.emplace(identifier, Request{replyParameters, deadline, awaited, std::move(completion)});
  queuedBytes -= output.unsentBytes();
  output.append(FrameKind::request, identifier, start.bytes(), std::move(encodedArguments));
  queuedBytes += output.unsentBytes();
  write(queuedBytes, deadline);
  return nullptr;
}

void ClientChannel::write(std::uint64_t end, TimeLimit::Instant deadline) {
  while (!broken && queuedBytes - output.unsentBytes() < end) {
    switch (output.writeTo(socket.get())) {
      case OutputQueue::Outcome::drained:
        return;
      case OutputQueue::Outcome::blocked:
        if (std::chrono::steady_clock::now() >= deadline) return breakConnection(limit.passed());
        waitForRoom(deadline);
        break;
      case OutputQueue::Outcome::failed:
        // The peer may have said why it went; whoever reads finds that, or the end.
        output.clear();
        return;
    }
  }
}

// Reads meanwhile, unless somebody does already: a service that waits for its replies to be taken
// does not take requests.
void ClientChannel::waitForRoom(TimeLimit::Instant deadline) {
  const bool takesReading = !reading;
  reading = true;
  mutex.unlock();
  const int ready =
      TimeLimit::readyEvents(socket.get(), takesReading ? POLLIN | POLLOUT : POLLOUT, deadline);
  if (takesReading && (ready & (POLLIN | POLLHUP | POLLERR)) != 0) readOnce();
  mutex.lock();
  if (!takesReading) return;
  reading = false;
  changed.notifyAll();
}

void ClientChannel::takeReadingOver() {
  reading = true;
  const TimeLimit::Instant deadline = requests.begin()->second.deadline;
  mutex.unlock();
  if (TimeLimit::readyEvents(socket.get(), POLLIN, deadline) != 0) readOnce();
  mutex.lock();
  reading = false;
  endOverdueRequests();
  changed.notifyAll();
}

void ClientChannel::waitForChange() {
  if (requests.empty()) return changed.wait(mutex);
  const TimeLimit::Instant deadline = requests.begin()->second.deadline;
  if (!changed.waitUntil(mutex, deadline)) endOverdueRequests();
}

void ClientChannel::endOverdueRequests() {
  const auto now = std::chrono::steady_clock::now();
  while (!requests.empty() && requests.begin()->second.deadline <= now) {
    const auto oldest = requests.begin();
    settle(oldest->second, failed(limit.passed()));
    overdue.insert(oldest->first);
    requests.erase(oldest);
    changed.notifyAll();
  }
}

void ClientChannel::readOnce() {
  const std::span<char> room = reader.room();
  const ssize_t count = ::recv(socket.get(), room.data(), room.size(), MSG_DONTWAIT);
  if (count < 0 && (errno == EINTR || errno == EAGAIN)) return;
  if (count <= 0) {
    MutexLock lock(mutex);
    breakConnection(connectionBroken());
    return;
  }
  reader.added(static_cast<std::size_t>(count));
  while (const std::optional<FrameReader::Frame> frame = reader.next()) {
    deliver(*frame);
    if (frame->error) return;
  }
}

// Whether nobody waits any more for what a frame answers, which its last part ends.
bool ClientChannel::isOverdue(const FrameReader::Frame& frame) {
  if (frame.kind == FrameKind::partOfReply) return overdue.contains(frame.identifier);
  return frame.kind != FrameKind::request && overdue.erase(frame.identifier) > 0;
}

void ClientChannel::deliver(const FrameReader::Frame& frame) {
  Request request;
  {
    MutexLock lock(mutex);
    const auto found = requests.find(frame.identifier);
    if (frame.error) {
      breakConnection(frame.error);
    } else if (frame.kind == FrameKind::failure && frame.identifier == 0) {
      breakConnection(decodeFailure(frame.body));
    } else if (isOverdue(frame)) {
      return;
    } else if (frame.kind == FrameKind::request || found == requests.end()) {
      breakConnection(makeServiceError(ServiceErrorCode::malformedMessage,
                                       "the service sent what nobody asked for"));
    } else if (frame.kind == FrameKind::partOfReply) {
      addPart(found->second, frame.body);
    } else {
      request = std::move(found->second);
      requests.erase(found);
    }
  }
  if (request.replyParameters == nullptr) return;
  // Without the lock, as a large reply takes a while to check.
  Reply reply = decodeReply(frame, std::move(request.parts), *request.replyParameters);
  MutexLock lock(mutex);
  settle(request, std::move(reply));
}

void ClientChannel::addPart(Request& request, std::string_view part) {
  if (request.parts.size() + part.size() > maximumReplySize) {
    return breakConnection(
        makeServiceError(ServiceErrorCode::messageTooLarge,
                         "a reply is larger than " + std::to_string(maximumReplySize) + " bytes"));
  }
  request.parts.append(part);
}

void ClientChannel::settle(Request& request, Reply reply) {
  if (request.awaited != nullptr) {
    request.awaited->emplace(std::move(reply));
    return;
  }
  --requestsWithCompletion;
  completed.emplace_back(std::move(request.completion), std::move(reply));
}

void ClientChannel::breakConnection(ErrorPtr reason) {
  if (!broken) {
    broken = std::move(reason);
    ::shutdown(socket.get(), SHUT_RDWR);
    for (auto& entry : requests) settle(entry.second, failed(broken));
    requests.clear();
    output.clear();
  }
  changed.notifyAll();
}

}  // namespace quenlet
