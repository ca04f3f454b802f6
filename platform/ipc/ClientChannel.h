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

#include "platform/foundation/Either.h"
#include "platform/foundation/Mutex.h"
#include "platform/ipc/FrameReader.h"
#include "platform/ipc/OutputQueue.h"
#include "platform/ipc/ServiceInterface.h"
#include "platform/ipc/ServiceLimits.h"
#include "platform/ipc/TimeLimit.h"
#include "platform/scheduling/FileDescriptor.h"

namespace quenlet {

// The traffic of one client connection. Thread-safe, and without a thread of its own: whoever waits
// for a reply while nobody reads takes the reading over and delivers the others' replies as well.
// A request that the socket does not take at once is written while reading goes on, so that two
// sides which both have much to say cannot block each other.
//
// A request ends at its time limit, at whatever it waits for. Its late reply is dropped. A request
// that could not be written by then ends the connection, as half a message cannot be taken back.
class ClientChannel final {
 public:
  using Completion = std::function<void(Result<std::string> reply)>;

  ClientChannel(FileDescriptor connectedSocket, ServiceInterface serviceInterface,
                TimeLimit timeLimit);
  ClientChannel(const ClientChannel&) = delete;
  ClientChannel& operator=(const ClientChannel&) = delete;

  // `completion` is called by runCompletions().
  void call(const std::string& selector, std::string encodedArguments, Completion completion)
      EXCLUDES(mutex);
  [[nodiscard]] Result<std::string> callAndWait(const std::string& selector,
                                                std::string encodedArguments) EXCLUDES(mutex);
  // Calls completions until stop(), and reads while any is awaited. For one thread.
  void runCompletions() EXCLUDES(mutex);
  // Whether the connection is broken, or the peer has closed its side.
  [[nodiscard]] bool isBroken() EXCLUDES(mutex);
  // Breaks the connection; runCompletions() returns once all completions have been called.
  void stop() EXCLUDES(mutex);

 private:
  using Reply = Result<std::string>;
  struct Request final {
    const std::vector<WireParameter>* replyParameters = nullptr;
    TimeLimit::Instant deadline;
    // One of the two: where a waiting caller expects the reply, or what is called with it.
    std::optional<Reply>* awaited = nullptr;
    Completion completion;
    // What has come of a reply in parts.
    std::string parts = {};
  };

  [[nodiscard]] ErrorPtr send(const std::string& selector, std::string encodedArguments,
                              std::optional<Reply>* awaited, Completion completion) REQUIRES(mutex);
  // Until all that was queued up to `end`, counted from the first byte, has gone out.
  void write(std::uint64_t end, TimeLimit::Instant deadline) REQUIRES(mutex);
  void waitForRoom(TimeLimit::Instant deadline) REQUIRES(mutex);
  // Both return at the deadline of the oldest request at the latest, and end those that are due.
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
  const TimeLimit limit;
  const std::size_t maximumMessageSize = ServiceLimits().messageSizeInBytes;
  const FileDescriptor socket;
  // Belongs to whoever set `reading`.
  FrameReader reader{maximumMessageSize, FrameKind::partOfReply};

  Mutex mutex;
  // Replies came, the reading became free, or the connection broke.
  ConditionVariable changed;
  bool reading GUARDED_BY(mutex) = false;
  bool stopping GUARDED_BY(mutex) = false;
  // Why the connection is broken; null while it is not.
  ErrorPtr broken GUARDED_BY(mutex);
  std::uint64_t lastIdentifier GUARDED_BY(mutex) = 0;
  // In the order of their deadlines.
  std::map<std::uint64_t, Request> requests GUARDED_BY(mutex);
  // Ended at their deadline; their replies may still come.
  std::set<std::uint64_t> overdue GUARDED_BY(mutex);
  std::size_t requestsWithCompletion GUARDED_BY(mutex) = 0;
  std::vector<std::pair<Completion, Reply>> completed GUARDED_BY(mutex);
  OutputQueue output GUARDED_BY(mutex);
  // All that was ever put into `output`.
  std::uint64_t queuedBytes GUARDED_BY(mutex) = 0;
};

}  // namespace quenlet
