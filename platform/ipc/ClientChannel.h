#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/foundation/FileDescriptor.h"
#include "platform/foundation/Mutex.h"
#include "platform/ipc/FrameReader.h"
#include "platform/ipc/OutputQueue.h"
#include "platform/ipc/ServiceInterface.h"
#include "platform/ipc/ServiceLimits.h"
#include "platform/ipc/TimeLimit.h"
#include "quenlet/Result.h"

namespace quenlet {

// The traffic of one client connection. Thread-safe, without a thread of its own: a caller that
// waits for a reply while nobody reads does the reading, and delivers other callers' replies too.
// While the socket is full, a writer keeps reading: client and service cannot block each other by
// both waiting to write.
//
// Every request ends at its time limit, in the timedOut error; a reply that comes later is dropped.
// A request that is not fully written by then breaks the connection: half a message cannot be
// taken back.
class ClientChannel final {
 public:
  using Completion = std::function<void(Result<std::string> reply)>;

  ClientChannel(FileDescriptor connectedSocket, ServiceInterface serviceInterface,
                Patience patience);
  ClientChannel(const ClientChannel&) = delete;
  ClientChannel& operator=(const ClientChannel&) = delete;

  // `completion` is called by runCompletions().
  void call(const std::string& selector, std::string encodedArguments, Completion completion)
      EXCLUDES(mutex);
  [[nodiscard]] Result<std::string> callAndWait(const std::string& selector,
                                                std::string encodedArguments) EXCLUDES(mutex);
  // Runs completions until stop(), and reads while one is due. Call it on one thread only.
  void runCompletions() EXCLUDES(mutex);
  // Whether the connection is broken, or the peer has closed its side.
  [[nodiscard]] bool isBroken() EXCLUDES(mutex);
  // Breaks the connection; runCompletions() returns once all completions have been called.
  void stop() EXCLUDES(mutex);

 private:
  using Reply = Result<std::string>;
  struct Request final {
    const std::vector<WireParameter>* replyParameters = nullptr;
    const TimeLimit* limit = nullptr;
    TimeLimit::Instant deadline;
    // Exactly one is set: where callAndWait() waits for the reply, or the completion of call().
    std::optional<Reply>* awaited = nullptr;
    Completion completion;
    // The parts received so far of a reply that is sent in several messages.
    std::string parts = {};
  };

  [[nodiscard]] ErrorPtr send(const std::string& selector, std::string encodedArguments,
                              std::optional<Reply>* awaited, Completion completion) REQUIRES(mutex);
  // Returns once the first `end` bytes ever queued have gone out, or the connection is broken.
  void write(std::uint64_t end, const TimeLimit& limit, TimeLimit::Instant deadline)
      REQUIRES(mutex);
  void waitForRoom(TimeLimit::Instant deadline) REQUIRES(mutex);
  // Both return by the deadline of the oldest request, and end the requests that are overdue.
  void takeReadingOver() REQUIRES(mutex);
  void waitForChange() REQUIRES(mutex);
  void endOverdueRequests() REQUIRES(mutex);
  void readOnce() EXCLUDES(mutex);
  [[nodiscard]] bool isOverdue(const FrameReader::Frame& frame) REQUIRES(mutex);
  void deliver(const FrameReader::Frame& frame) EXCLUDES(mutex);
  void addPart(Request& request, std::string_view part) REQUIRES(mutex);
  void settle(Request& request, Reply reply) REQUIRES(mutex);
  void breakConnection(ErrorPtr reason) REQUIRES(mutex);

  const ServiceInterface interface;
  const TimeLimit limitOfFirstReply;
  const TimeLimit limitOfLaterReplies;
  const std::size_t maximumMessageSize = ServiceLimits().messageSizeInBytes;
  const FileDescriptor socket;
  // Used only by the thread that set `reading`.
  FrameReader reader{maximumMessageSize, FrameKind::partOfReply};

  Mutex mutex;
  // Notified when a reply came, `reading` became free, or the connection broke.
  ConditionVariable changed;
  bool reading GUARDED_BY(mutex) = false;
  bool stopping GUARDED_BY(mutex) = false;
  // Whether the service has sent anything.
  bool hasAnswered GUARDED_BY(mutex) = false;
  // Why the connection broke; null while it works.
  ErrorPtr broken GUARDED_BY(mutex);
  std::uint64_t lastIdentifier GUARDED_BY(mutex) = 0;
  // By identifier. The time limit never becomes shorter, so this is the order of deadlines too.
  std::map<std::uint64_t, Request> requests GUARDED_BY(mutex);
  // Requests that ended at their deadline, whose replies may still come.
  std::set<std::uint64_t> overdue GUARDED_BY(mutex);
  std::size_t requestsWithCompletion GUARDED_BY(mutex) = 0;
  std::vector<std::pair<Completion, Reply>> completed GUARDED_BY(mutex);
  OutputQueue output GUARDED_BY(mutex);
  // The bytes ever put into `output`.
  std::uint64_t queuedBytes GUARDED_BY(mutex) = 0;
};

}  // namespace quenlet
