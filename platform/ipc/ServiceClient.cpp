#include "platform/ipc/ServiceClient.h"

#include <poll.h>
#include <sys/epoll.h>
#include <sys/socket.h>

#include <cerrno>

#include "platform/ipc/ReplyDecoder.h"
#include "platform/ipc/ServiceConnector.h"
#include "platform/ipc/WireEncoder.h"
#include "platform/scheduling/runGuarded.h"

namespace quenlet {

// Who reads. The loop, when the socket has something to read. A thread that waits and finds
// `reading` false: it sets it, polls and reads without the lock, settles every request whose reply
// came, its own or not, and clears it. `changed` wakes the others, and one of them reads next.
// Three requests, with time to the right:
//
//   callAndWait()    sends 1 | reads ............... | gets 1, returns
//   callAndWait()    sends 2 | waits ... gets 2, returns
//   call()           sends 3, returns
//   the loop                 | leaves it alone ..... | reads ... calls the completion of 3
//
// Who writes. A thread that waits, until its own request has gone out; the loop, once the socket
// takes more of what call() left. `output` keeps messages whole and in order, in any of these
// threads. Only completions run user code, and no lock is held then.

namespace {

ErrorPtr connectionBroken() {
  return makeServiceError(ServiceErrorCode::connectionBroken, "the service ended the connection");
}

ServiceClient::Reply failed(ErrorPtr error) {
  return ServiceClient::Reply::failure(std::move(error));
}

}  // namespace

Result<std::shared_ptr<ServiceClient>> ServiceClient::connect(const std::string& serviceName,
                                                              ServiceInterface interface,
                                                              Patience patience) {
  using Connected = Result<std::shared_ptr<ServiceClient>>;
  Result<FileDescriptor> socket = connectToService(serviceName, TimeLimit(patience.first));
  if (!socket.ok()) return Connected::failure(socket.error());
  return Connected::success(
      withConnectedSocket(std::move(socket).takeValue(), std::move(interface), patience));
}

std::shared_ptr<ServiceClient> ServiceClient::withConnectedSocket(FileDescriptor socket,
                                                                  ServiceInterface interface,
                                                                  Patience patience) {
  return std::shared_ptr<ServiceClient>(
      new ServiceClient(std::move(socket), std::move(interface), patience));
}

ServiceClient::ServiceClient(FileDescriptor connectedSocket, ServiceInterface serviceInterface,
                             Patience patience)
    : interface(std::move(serviceInterface)),
      limitOfFirstReply(patience.first),
      limitOfLaterReplies(patience.later),
      socket(std::move(connectedSocket)) {}

ServiceClient::~ServiceClient() { stop(); }

void ServiceClient::stop() {
  MutexLock lock(mutex);
  breakConnection(connectionBroken());
}

void ServiceClient::call(const std::string& selector, std::string encodedArguments,
                         Completion completion, const std::shared_ptr<ClientLoop>& wanted) {
  MutexLock lock(mutex);
  if (!loop) attach(wanted);
  if (ErrorPtr error = enqueue(selector, std::move(encodedArguments), nullptr, completion)) {
    Request refused;
    refused.completion = std::move(completion);
    return settle(refused, failed(std::move(error)));
  }
  writeWhatFits();
  armTimer();
}

void ServiceClient::attach(const std::shared_ptr<ClientLoop>& wanted) {
  loop = wanted;
  if (broken) return;
  watch = loop->events.watch(socket.get(), EPOLLIN, [weak = weak_from_this()](std::uint32_t ready) {
    if (const auto self = weak.lock()) self->serve(ready);
  });
}

void ServiceClient::serve(std::uint32_t readyEvents) {
  std::vector<std::pair<Completion, Reply>> settled;
  {
    MutexLock lock(mutex);
    writeWhatFits();
    if ((readyEvents & ~std::uint32_t{EPOLLOUT}) == 0 || broken) return;
    if (reading) {
      watchIsPaused = true;
      return awaitEvents();
    }
    settledByLoop = &settled;
    beginReading();
    const bool hasRead = readOnce();
    endReading();
    // As when the kernel refuses to watch the socket.
    if ((readyEvents & EPOLLERR) != 0 && !hasRead) breakConnection(connectionBroken());
    settledByLoop = nullptr;
  }
  for (auto& entry : settled) {
    runGuarded([&entry] { std::exchange(entry.first, nullptr)(std::move(entry.second)); });
  }
}

void ServiceClient::armTimer() {
  if (timerIsSet || requests.empty()) return;
  const std::chrono::duration<double> left =
      requests.begin()->second.deadline - std::chrono::steady_clock::now();
  static_cast<void>(loop->timers.afterDelay(left.count(), [weak = weak_from_this()] {
    if (const auto self = weak.lock()) self->endWhatIsDue();
  }));
  timerIsSet = true;
}

void ServiceClient::endWhatIsDue() {
  MutexLock lock(mutex);
  timerIsSet = false;
  endOverdueRequests();
  armTimer();
}

ServiceClient::Reply ServiceClient::callAndWait(const std::string& selector,
                                                std::string encodedArguments) {
  // Set exactly once, by the thread that takes the request out of `requests`.
  std::optional<Reply> reply;
  Completion none;
  MutexLock lock(mutex);
  if (ErrorPtr error = enqueue(selector, std::move(encodedArguments), &reply, none)) {
    return failed(std::move(error));
  }
  const Request& request = requests.rbegin()->second;
  writeAll(request.end, *request.limit, request.deadline);
  while (!reply) {
    if (reading) {
      waitForChange();
    } else {
      takeReadingOver();
    }
  }
  return *std::move(reply);
}

bool ServiceClient::isBroken() {
  {
    MutexLock lock(mutex);
    if (broken) return true;
  }
  // A hang-up goes unnoticed while nothing reads, as when no reply is due: ask the socket.
  pollfd look{socket.get(), POLLRDHUP, 0};
  if (::poll(&look, 1, 0) <= 0) return false;
  MutexLock lock(mutex);
  takeLastReplies();
  return true;
}

// What came before the end answers requests all the same.
void ServiceClient::takeLastReplies() {
  for (bool mayHaveMore = true; mayHaveMore && !reading && !broken;) {
    beginReading();
    mayHaveMore = readOnce();
    endReading();
  }
}

ErrorPtr ServiceClient::enqueue(const std::string& selector, std::string encodedArguments,
                                std::optional<Reply>* awaited, Completion& completion) {
  if (broken) return broken;
  const auto* replyParameters = interface.parameters(selector, OfReply::yes);
  if (replyParameters == nullptr) {
    return makeServiceError(ServiceErrorCode::unknownOperation,
                            "the interface lacks this operation");
  }
  WireEncoder start;
  start.string(selector);
  if (FrameHeader::countedBytes + start.bytes().size() + encodedArguments.size() >
      maximumMessageSize) {
    return makeServiceError(ServiceErrorCode::messageTooLarge,
                            "the request is larger than a message may be");
  }
  const std::uint64_t sent = sentBytes();
  output.append(FrameKind::request, ++lastIdentifier, start.bytes(), std::move(encodedArguments));
  queuedBytes = sent + output.unsentBytes();
  const TimeLimit& limit = hasAnswered ? limitOfLaterReplies : limitOfFirstReply;
  requests.emplace(lastIdentifier, Request{replyParameters, &limit, limit.deadline(), awaited,
                                           std::move(completion), queuedBytes});
  return nullptr;
}

void ServiceClient::writeAll(std::uint64_t end, const TimeLimit& limit,
                             TimeLimit::Instant deadline) {
  while (!broken && sentBytes() < end) {
    switch (output.writeTo(socket.get())) {
      case OutputQueue::Outcome::drained:
        return;
      case OutputQueue::Outcome::blocked:
        if (std::chrono::steady_clock::now() >= deadline) return breakConnection(limit.passed());
        waitForRoom(deadline);
        break;
      case OutputQueue::Outcome::failed:
        return dropOutput();
    }
  }
}

// The loop writes the rest when it can.
void ServiceClient::writeWhatFits() {
  if (broken) return;
  if (!output.empty() && output.writeTo(socket.get()) == OutputQueue::Outcome::failed) {
    dropOutput();
  }
  awaitEvents();
}

void ServiceClient::awaitEvents() {
  std::uint32_t events = 0;
  if (!watchIsPaused) events |= EPOLLIN;
  if (!output.empty()) events |= EPOLLOUT;
  watch->setEvents(events);
}

// The service may have sent its reason before it closed: reading finds that, or the end. Nothing
// may follow a message that was cut.
void ServiceClient::dropOutput() {
  output.clear();
  ::shutdown(socket.get(), SHUT_WR);
}

// Reads meanwhile, unless another thread does: a service with too many unread replies stops reading
// requests, and both sides would wait for ever.
void ServiceClient::waitForRoom(TimeLimit::Instant deadline) {
  if (reading) {
    mutex.unlock();
    static_cast<void>(TimeLimit::readyEvents(socket.get(), POLLOUT, deadline));
    mutex.lock();
    return;
  }
  beginReading();
  const int ready = TimeLimit::readyEvents(socket.get(), POLLIN | POLLOUT, deadline);
  if ((ready & (POLLIN | POLLHUP | POLLERR)) != 0) readOnce();
  endReading();
}

void ServiceClient::takeReadingOver() {
  const TimeLimit::Instant deadline = requests.begin()->second.deadline;
  beginReading();
  if (TimeLimit::readyEvents(socket.get(), POLLIN, deadline) != 0) readOnce();
  endReading();
}

void ServiceClient::beginReading() {
  reading = true;
  mutex.unlock();
}

void ServiceClient::endReading() {
  mutex.lock();
  reading = false;
  if (std::exchange(watchIsPaused, false) && !broken) awaitEvents();
  endOverdueRequests();
  changed.notifyAll();
}

void ServiceClient::waitForChange() {
  // Ours may have been taken out, to be settled next.
  if (requests.empty()) return changed.wait(mutex);
  const TimeLimit::Instant deadline = requests.begin()->second.deadline;
  if (!changed.waitUntil(mutex, deadline)) endOverdueRequests();
}

void ServiceClient::endOverdueRequests() {
  const auto now = std::chrono::steady_clock::now();
  while (!requests.empty() && requests.begin()->second.deadline <= now) {
    const auto oldest = requests.begin();
    if (oldest->second.end > sentBytes()) return breakConnection(oldest->second.limit->passed());
    settle(oldest->second, failed(oldest->second.limit->passed()));
    overdue.insert(oldest->first);
    requests.erase(oldest);
    changed.notifyAll();
  }
}

bool ServiceClient::readOnce() noexcept try {
  const std::span<char> room = reader.room();
  const ssize_t count = ::recv(socket.get(), room.data(), room.size(), MSG_DONTWAIT);
  if (count < 0 && (errno == EINTR || errno == EAGAIN)) return errno == EINTR;
  if (count <= 0) {
    MutexLock lock(mutex);
    breakConnection(connectionBroken());
    return true;
  }
  reader.added(static_cast<std::size_t>(count));
  while (const std::optional<FrameReader::Frame> frame = reader.next()) {
    deliver(*frame);
    if (frame->error) break;
  }
  return true;
} catch (const std::exception&) {
  // Out of memory, and with a part of the stream lost.
  MutexLock lock(mutex);
  breakConnection(noMemory);
  return true;
}

// Whether the frame answers a request that has timed out. The last message of the reply forgets it.
bool ServiceClient::isOverdue(const FrameReader::Frame& frame) {
  if (frame.kind == FrameKind::partOfReply) return overdue.contains(frame.identifier);
  return frame.kind != FrameKind::request && overdue.erase(frame.identifier) > 0;
}

void ServiceClient::deliver(const FrameReader::Frame& frame) {
  Request request;
  {
    MutexLock lock(mutex);
    hasAnswered = true;
    const auto found = requests.find(frame.identifier);
    if (frame.error) {
      breakConnection(frame.error);
    } else if (frame.kind == FrameKind::failure && frame.identifier == 0) {
      // Concerns the whole connection: the service says why it will end it.
      breakConnection(ReplyDecoder::failure(frame.body));
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
  Reply reply = decoded(frame, request);
  MutexLock lock(mutex);
  settle(request, std::move(reply));
}

ServiceClient::Reply ServiceClient::decoded(const FrameReader::Frame& last, Request& request) const
    try {
  return ReplyDecoder::reply(last, std::move(request.parts), *request.replyParameters);
} catch (const std::bad_alloc&) {
  return failed(noMemory);
}

void ServiceClient::addPart(Request& request, std::string_view part) {
  if (request.parts.size() + part.size() > ReplyDecoder::maximumSize) {
    return breakConnection(makeServiceError(
        ServiceErrorCode::messageTooLarge,
        "a reply is larger than " + std::to_string(ReplyDecoder::maximumSize) + " bytes"));
  }
  request.parts.append(part);
}

void ServiceClient::settle(Request& request, Reply reply) {
  if (request.awaited != nullptr) {
    request.awaited->emplace(std::move(reply));
    return;
  }
  if (settledByLoop != nullptr) {
    settledByLoop->emplace_back(std::move(request.completion), std::move(reply));
    return;
  }
  loop->events.post(
      [completion = std::move(request.completion),
       reply = std::make_shared<Reply>(std::move(reply))] { completion(std::move(*reply)); });
}

void ServiceClient::breakConnection(ErrorPtr reason) {
  if (!broken) {
    broken = std::move(reason);
    // Not closed, as other threads may be in poll() or recv(); they wake and find the end.
    ::shutdown(socket.get(), SHUT_RDWR);
    for (auto& entry : requests) settle(entry.second, failed(broken));
    requests.clear();
    output.clear();
    if (watch) watch->cancel();
  }
  changed.notifyAll();
}

}  // namespace quenlet
