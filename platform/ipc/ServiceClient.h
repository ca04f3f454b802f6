#pragma once

#include <cerrno>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/foundation/FileDescriptor.h"
#include "platform/foundation/Mutex.h"
#include "platform/ipc/ClientLoop.h"
#include "platform/ipc/FrameReader.h"
#include "platform/ipc/OutputQueue.h"
#include "platform/ipc/ServiceInterface.h"
#include "platform/ipc/ServiceLimits.h"
#include "platform/ipc/TimeLimit.h"
#include "quenlet/Result.h"

namespace quenlet {

// A client's connection to a named service of the same user. Thread-safe, without a thread of its
// own. When it breaks, pending and later requests fail with connectionBroken, or with the error
// that the service gave for ending it.
//
// Connecting and each request have a time limit, after which they fail with timedOut; the service
// may still perform the request, but its late reply is dropped. A request that is not fully written
// by then breaks the connection: half a message cannot be taken back.
class ServiceClient final : public std::enable_shared_from_this<ServiceClient> {
 public:
  // The encoded, validated reply values, or the error.
  using Reply = Result<std::string>;
  using Completion = std::function<void(Reply reply)>;

  static constexpr std::chrono::milliseconds standardTimeLimit{25'000};

  // The noService error when nobody listens.
  [[nodiscard]] static Result<std::shared_ptr<ServiceClient>> connect(
      const std::string& serviceName, ServiceInterface interface,
      Patience patience = standardTimeLimit);
  // Talks over a connected, blocking stream socket, without a look at the peer.
  [[nodiscard]] static std::shared_ptr<ServiceClient> withConnectedSocket(
      FileDescriptor socket, ServiceInterface interface, Patience patience = standardTimeLimit);
  // As stop().
  ~ServiceClient();
  ServiceClient(const ServiceClient&) = delete;
  ServiceClient& operator=(const ServiceClient&) = delete;

  // Sends a request and returns without waiting, even if the socket takes no more for now.
  // `completion` is called once, on the loop and never within this call. One loop for one client.
  void call(const std::string& selector, std::string encodedArguments, Completion completion,
            const std::shared_ptr<ClientLoop>& loop) EXCLUDES(mutex);
  // Sends a request and waits for the reply. Completions may call this.
  [[nodiscard]] Reply callAndWait(const std::string& selector, std::string encodedArguments)
      EXCLUDES(mutex);

  // Whether every further request would fail: the service is gone or has ended the connection.
  [[nodiscard]] bool isBroken() EXCLUDES(mutex);
  // Breaks the connection. Requests under way fail with connectionBroken.
  void stop() EXCLUDES(mutex);

 private:
  struct Request final {
    const std::vector<WireParameter>* replyParameters = nullptr;
    const TimeLimit* limit = nullptr;
    TimeLimit::Instant deadline;
    // Exactly one is set: where callAndWait() waits for the reply, or the completion of call().
    std::optional<Reply>* awaited = nullptr;
    Completion completion;
    // The request has gone out once so many bytes have.
    std::uint64_t end = 0;
    // The parts received so far of a reply that is sent in several messages.
    std::string parts = {};
  };

  ServiceClient(FileDescriptor connectedSocket, ServiceInterface serviceInterface,
                Patience patience);

  void attach(const std::shared_ptr<ClientLoop>& wanted) REQUIRES(mutex);
  // What the loop does when the socket is ready, and when a deadline may have passed.
  void serve(std::uint32_t readyEvents) EXCLUDES(mutex);
  void endWhatIsDue() EXCLUDES(mutex);
  void armTimer() REQUIRES(mutex);
  // Takes the completion or the place only if it returns null.
  [[nodiscard]] ErrorPtr enqueue(const std::string& selector, std::string encodedArguments,
                                 std::optional<Reply>* awaited, Completion& completion)
      REQUIRES(mutex);
  [[nodiscard]] std::uint64_t sentBytes() const REQUIRES(mutex) {
    return queuedBytes - output.unsentBytes();
  }
  // Returns once the first `end` bytes ever queued have gone out, or the connection is broken.
  void writeAll(std::uint64_t end, const TimeLimit& limit, TimeLimit::Instant deadline)
      REQUIRES(mutex);
  void writeWhatFits() REQUIRES(mutex);
  void dropOutput() REQUIRES(mutex);
  void awaitEvents() REQUIRES(mutex);
  void waitForRoom(TimeLimit::Instant deadline) REQUIRES(mutex);
  // Both return by the deadline of the oldest request, and end the requests that are overdue.
  void takeReadingOver() REQUIRES(mutex);
  void waitForChange() REQUIRES(mutex);
  void beginReading() RELEASE(mutex);
  void endReading() ACQUIRE(mutex);
  void endOverdueRequests() REQUIRES(mutex);
  // False when there was nothing to read.
  bool readOnce() noexcept EXCLUDES(mutex);
  void takeLastReplies() REQUIRES(mutex);
  [[nodiscard]] bool isOverdue(const FrameReader::Frame& frame) REQUIRES(mutex);
  void deliver(const FrameReader::Frame& frame) EXCLUDES(mutex);
  // The error is the system's if there is no memory for the reply.
  [[nodiscard]] Reply decoded(const FrameReader::Frame& last, Request& request) const;
  void addPart(Request& request, std::string_view part) REQUIRES(mutex);
  void settle(Request& request, Reply reply) REQUIRES(mutex);
  void breakConnection(ErrorPtr reason) REQUIRES(mutex);

  const ServiceInterface interface;
  const TimeLimit limitOfFirstReply;
  const TimeLimit limitOfLaterReplies;
  const std::size_t maximumMessageSize = ServiceLimits().messageSizeInBytes;
  const FileDescriptor socket;
  const ErrorPtr noMemory = makePosixError(ENOMEM, "read from the service");
  // Used only by the thread that set `reading`.
  FrameReader reader{maximumMessageSize, FrameKind::partOfReply};

  Mutex mutex;
  // Notified when a reply came, `reading` became free, or the connection broke.
  ConditionVariable changed;
  bool reading GUARDED_BY(mutex) = false;
  // Whether the service has sent anything.
  bool hasAnswered GUARDED_BY(mutex) = false;
  // Why the connection broke; null while it works.
  ErrorPtr broken GUARDED_BY(mutex);
  std::uint64_t lastIdentifier GUARDED_BY(mutex) = 0;
  // By identifier. The time limit never becomes shorter, so this is the order of deadlines too.
  std::map<std::uint64_t, Request> requests GUARDED_BY(mutex);
  // Requests that ended at their deadline, whose replies may still come.
  std::set<std::uint64_t> overdue GUARDED_BY(mutex);
  OutputQueue output GUARDED_BY(mutex);
  // The bytes ever put into `output`.
  std::uint64_t queuedBytes GUARDED_BY(mutex) = 0;

  // Null until the first call().
  std::shared_ptr<ClientLoop> loop GUARDED_BY(mutex);
  std::shared_ptr<EventLoop::Watch> watch GUARDED_BY(mutex);
  // Whether the loop leaves the socket alone until the thread that reads it has done.
  bool watchIsPaused GUARDED_BY(mutex) = false;
  bool timerIsSet GUARDED_BY(mutex) = false;
  // Set while the loop reads: what is settled then runs at the end of its turn.
  std::vector<std::pair<Completion, Reply>>* settledByLoop GUARDED_BY(mutex) = nullptr;
};

}  // namespace quenlet
