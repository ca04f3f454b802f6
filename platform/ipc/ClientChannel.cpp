#include "platform/ipc/ClientChannel.h"

#include <poll.h>
#include <sys/socket.h>

#include <cerrno>

#include "platform/ipc/ErrorWire.h"

namespace quenlet {

// Who reads. A thread that waits and finds `reading` false sets it, polls and reads without the
// lock, settles every request whose reply came, its own or not, and clears it. `changed` wakes the
// others, and one of them reads next. Three requests, with time to the right:
//
//   callAndWait()      sends 1 | reads ............... | gets 1, returns
//   callAndWait()      sends 2 | waits ... gets 2, returns
//   call()             sends 3, returns
//   runCompletions()           | waits ............... | reads ... gets 3, calls its completion
//
// Who writes. Each sender, until its own request has gone out; `output` keeps messages whole and in
// order, whichever sender's turn it is. Only completions run user code, and no lock is held then.

namespace {

// The limit for a reply in parts: as much as the largest file that the service could have read.
constexpr std::size_t maximumReplySize = std::size_t{1} << 30;

ErrorPtr connectionBroken() {
  return makeServiceError(ServiceErrorCode::connectionBroken, "the service ended the connection");
}

Result<std::string> failed(ErrorPtr error) {
  return Result<std::string>::failure(std::move(error));
}

ErrorPtr decodeFailure(std::string_view body) {
  static const std::vector<WireParameter> parameters{
      {WireType::object, false, {ErrorWire::className}}};
  if (ErrorPtr error = validateWireValues(body, parameters)) return error;
  WireReader values(body);
  return ErrorWire::decode(values);
}

// `parts` are the body of the messages before `frame`; the last one has the rest.
Result<std::string> decodeReply(const FrameReader::Frame& frame, std::string parts,
                                const std::vector<WireParameter>& parameters) {
  if (frame.kind == FrameKind::failure) return failed(decodeFailure(frame.body));
  std::string values = std::move(parts.append(frame.body));
  if (ErrorPtr error = validateWireValues(values, parameters)) return failed(std::move(error));
  return Result<std::string>::success(std::move(values));
}

}  // namespace

ClientChannel::ClientChannel(FileDescriptor connectedSocket, ServiceInterface serviceInterface,
                             Patience patience)
    : interface(std::move(serviceInterface)),
      limitOfFirstReply(patience.first),
      limitOfLaterReplies(patience.later),
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
  // Set exactly once, by the thread that takes the request out of `requests`.
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
      // Destroyed without the lock: completions own objects of the caller's.
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
  // While no reply is due nobody reads, and a hang-up goes unnoticed: ask the socket.
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
  const TimeLimit& limit = hasAnswered ? limitOfLaterReplies : limitOfFirstReply;
  const TimeLimit::Instant deadline = limit.deadline();
  requests.emplace(identifier,
                   Request{replyParameters, &limit, deadline, awaited, std::move(completion)});
  // If writing breaks the connection, that settles the request, too.
  queuedBytes -= output.unsentBytes();
  output.append(FrameKind::request, identifier, start.bytes(), std::move(encodedArguments));
  queuedBytes += output.unsentBytes();
  write(queuedBytes, limit, deadline);
  return nullptr;
}

void ClientChannel::write(std::uint64_t end, const TimeLimit& limit, TimeLimit::Instant deadline) {
  while (!broken && queuedBytes - output.unsentBytes() < end) {
    switch (output.writeTo(socket.get())) {
      case OutputQueue::Outcome::drained:
        return;
      case OutputQueue::Outcome::blocked:
        if (std::chrono::steady_clock::now() >= deadline) return breakConnection(limit.passed());
        waitForRoom(deadline);
        break;
      case OutputQueue::Outcome::failed:
        // The service may have sent its reason before it closed. Reading finds that, or the end.
        output.clear();
        return;
    }
  }
}

// Reads meanwhile, unless another thread does: a service with too many unread replies stops reading
// requests, and both sides would wait for ever.
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
    settle(oldest->second, failed(oldest->second.limit->passed()));
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

// Whether the frame answers a request that has timed out. The last message of the reply forgets it.
bool ClientChannel::isOverdue(const FrameReader::Frame& frame) {
  if (frame.kind == FrameKind::partOfReply) return overdue.contains(frame.identifier);
  return frame.kind != FrameKind::request && overdue.erase(frame.identifier) > 0;
}

void ClientChannel::deliver(const FrameReader::Frame& frame) {
  Request request;
  {
    MutexLock lock(mutex);
    hasAnswered = true;
    const auto found = requests.find(frame.identifier);
    if (frame.error) {
      breakConnection(frame.error);
    } else if (frame.kind == FrameKind::failure && frame.identifier == 0) {
      // Concerns the whole connection: the service says why it will end it.
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
  // Without the lock: a large reply takes a while to check.
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
    // Not closed, as other threads may be in poll() or recv(); they wake and find the end.
    ::shutdown(socket.get(), SHUT_RDWR);
    for (auto& entry : requests) settle(entry.second, failed(broken));
    requests.clear();
    output.clear();
  }
  changed.notifyAll();
}

}  // namespace quenlet
