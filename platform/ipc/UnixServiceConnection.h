#pragma once

#include <sys/epoll.h>

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "platform/foundation/Mutex.h"
#include "platform/ipc/FrameReader.h"
#include "platform/ipc/HeldBytes.h"
#include "platform/ipc/PeerIdentity.h"
#include "platform/ipc/ReplyQueue.h"
#include "platform/ipc/ServiceConnection.h"
#include "platform/ipc/ServiceContext.h"
#include "platform/scheduling/FileDescriptor.h"

namespace quenlet {

// The service's side of one connected Unix socket. Reads, checks and dispatches requests on an
// event loop's thread; large requests are left to a worker, and nothing is read until it is done.
// What is answered during the dispatch goes out in one piece after it; a later answer is written by
// the thread that has it, a long one by workers, as the peer takes it. Thread-safe.
//
// A request that is wrong in itself is answered with a failure. A header that makes no sense, a
// peer that goes, and one that leaves too much unread end the connection, after which replies to it
// do nothing.
class UnixServiceConnection final : public ServiceConnection,
                                    public std::enable_shared_from_this<UnixServiceConnection> {
 public:
  // On the loop's thread, once, after the connection has ended by itself.
  using ClosedHandler = std::function<void(UnixServiceConnection&)>;

  UnixServiceConnection(std::shared_ptr<const ServiceContext> serviceContext,
                        FileDescriptor connectedSocket, PeerIdentity peerIdentity,
                        ClosedHandler closedHandler);
  UnixServiceConnection(const UnixServiceConnection&) = delete;
  UnixServiceConnection& operator=(const UnixServiceConnection&) = delete;

  [[nodiscard]] pid_t processIdentifier() const override { return peer.process; }
  [[nodiscard]] std::optional<std::filesystem::path> executable() const override {
    return peer.executable;
  }
  [[nodiscard]] std::optional<PropertyList> valueForEntitlement(
      const std::string& entitlement) const override;
  void setPeerTreatment(PeerTreatment treatment) override;
  void setExportedInterface(ServiceInterface interface) override EXCLUDES(mutex);
  void setExportedObject(std::shared_ptr<ExportedObject> object) override EXCLUDES(mutex);
  void resume() override EXCLUDES(mutex);

  // Waits for the peer to go, from now on; requests wait for resume(). Once.
  void start() EXCLUDES(mutex);
  // Takes what has come already, without a wait of the loop for it. On the loop's thread.
  void readAtOnce() EXCLUDES(mutex) { onReady(EPOLLIN); }
  // Ends the connection without a word. On the loop's thread, or when the loop does not run.
  void close() EXCLUDES(mutex);
  // How readily this connection is given up when memory is short: of two, the lesser one goes
  // first. Refused peers do, then those with a message that has not ended, the oldest one first,
  // then those that hold the most. On the loop's thread.
  struct Standing final {
    bool isServed = false;
    std::chrono::steady_clock::time_point unfinishedSince;
    std::int64_t negatedHeldBytes = 0;
    friend auto operator<=>(const Standing&, const Standing&) = default;
  };
  [[nodiscard]] Standing standing() EXCLUDES(mutex);

 private:
  class PendingReply;
  struct Input;
  struct LargeRequest;

  void onReady(std::uint32_t events) EXCLUDES(mutex);
  void readOnce(int socket) EXCLUDES(mutex);
  void continueReading() EXCLUDES(mutex);
  void dispatchFrames() EXCLUDES(mutex);
  void noteUnfinishedMessage();
  void failSenseless(const FrameReader::Frame& frame, const ErrorPtr& error) EXCLUDES(mutex);
  void dispatch(const FrameReader::Frame& frame) EXCLUDES(mutex);
  [[nodiscard]] bool mustWaitWith(const FrameReader::Frame& frame) EXCLUDES(mutex);
  [[nodiscard]] bool leaveToWorker(const FrameReader::Frame& frame) EXCLUDES(mutex);
  void performLargeRequest() EXCLUDES(mutex);
  void perform(const FrameReader::Frame& frame, const std::string& selector,
               std::string_view arguments) EXCLUDES(mutex);
  [[nodiscard]] bool mayDispatch() EXCLUDES(mutex);
  void finishBatch() EXCLUDES(mutex);
  // The transaction, once nothing is under way any more; it ends with the lock free.
  [[nodiscard]] std::shared_ptr<ProcessTransaction> endedTransaction() REQUIRES(mutex);
  [[nodiscard]] bool mustWait() const REQUIRES(mutex);
  void continueSoon() REQUIRES(mutex);
  // Ends the connection from any thread, when memory is too short for an answer.
  void giveUp() EXCLUDES(mutex);
  void closeByItself() EXCLUDES(mutex);
  void answer(const PendingReply& pending, FrameKind kind, std::string body) EXCLUDES(mutex);
  void answerInPieces(const PendingReply& pending, EncodedReplyPtr reply) EXCLUDES(mutex);
  void countAnswer(const PendingReply& pending) REQUIRES(mutex);
  // As endedTransaction().
  [[nodiscard]] std::shared_ptr<ProcessTransaction> finishAnswer() REQUIRES(mutex);
  [[nodiscard]] bool isOpen() EXCLUDES(mutex);
  void fail(std::uint64_t identifier, const ErrorPtr& error) EXCLUDES(mutex);
  void enqueue(FrameKind kind, std::uint64_t identifier, std::string body) REQUIRES(mutex);
  [[nodiscard]] bool mayEnqueue() REQUIRES(mutex);
  void sendPiecesSoon() REQUIRES(mutex);
  void sendPieces() EXCLUDES(mutex);
  [[nodiscard]] std::optional<ReplyQueue::NextPiece> takeNextPiece() EXCLUDES(mutex);
  void addPiece(std::shared_ptr<const std::string> bytes) EXCLUDES(mutex);
  void flush() REQUIRES(mutex);
  void abandon() REQUIRES(mutex);
  [[nodiscard]] std::uint32_t wantedEvents() const REQUIRES(mutex);
  void updateWatch() REQUIRES(mutex);

  const std::shared_ptr<const ServiceContext> context;
  const ServiceLimits& limits;
  const PeerIdentity peer;
  // As they were when the connection was accepted; null for none.
  const std::shared_ptr<const PropertyListDictionary> entitlements;
  const ClosedHandler onClosed;
  // Set before the start.
  bool isRefused = false;
  // On the loop's thread only.
  std::shared_ptr<Input> input;
  // Since when the reader has a part of a message.
  std::optional<std::chrono::steady_clock::time_point> unfinishedSince;
  std::size_t requestsInTurn = 0;

  Mutex mutex;
  FileDescriptor descriptor GUARDED_BY(mutex);
  std::shared_ptr<EventLoop::Watch> watch GUARDED_BY(mutex);
  std::shared_ptr<const ServiceInterface> exportedInterface GUARDED_BY(mutex);
  std::shared_ptr<ExportedObject> exportedObject GUARDED_BY(mutex);
  ReplyQueue output GUARDED_BY(mutex);
  HeldBytes::Part heldOutput GUARDED_BY(mutex);
  std::size_t unanswered GUARDED_BY(mutex) = 0;
  // Of them, those that expect a long reply; and whether the next request is one of these.
  std::size_t unansweredLong GUARDED_BY(mutex) = 0;
  bool nextIsLong GUARDED_BY(mutex) = false;
  // A worker encodes pieces of replies.
  bool sendingPieces GUARDED_BY(mutex) = false;
  // Left to a worker, which takes it from here; `largeRequestOpen` until it is done.
  std::shared_ptr<const LargeRequest> largeRequest GUARDED_BY(mutex);
  bool largeRequestOpen GUARDED_BY(mutex) = false;
  bool resumed GUARDED_BY(mutex) = false;
  // From the first request that is taken until no answer is due or unsent.
  std::shared_ptr<ProcessTransaction> transaction GUARDED_BY(mutex);
  // A limit was reached, or the service takes no more; complete requests may wait in the reader.
  bool paused GUARDED_BY(mutex) = false;
  bool continuationPosted GUARDED_BY(mutex) = false;
  // The loop's thread is dispatching, and writes what it answered afterwards.
  bool dispatching GUARDED_BY(mutex) = false;
  // Nothing more can be written; the loop closes the socket soon.
  bool abandoned GUARDED_BY(mutex) = false;
};

}  // namespace quenlet
