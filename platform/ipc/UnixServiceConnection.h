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
// event loop's thread. A worker performs large requests; nothing is read until it is done. Answers
// given during the dispatch are written together after it; a later answer is written by the thread
// that gives it, and a long one by workers as the peer reads it. Thread-safe.
//
// A bad request is answered with a failure. The connection ends on a malformed header, when the
// peer hangs up, or when it leaves too much unread; later replies to it do nothing.
class UnixServiceConnection final : public ServiceConnection,
                                    public std::enable_shared_from_this<UnixServiceConnection> {
 public:
  // Called on the loop's thread, once, when the connection has ended other than through close().
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

  // Starts to watch the socket for the peer's hang-up; requests wait for resume(). Call it once.
  void start() EXCLUDES(mutex);
  // Reads what has already arrived instead of waiting for the loop. On the loop's thread.
  void readAtOnce() EXCLUDES(mutex) { onReady(EPOLLIN); }
  // Ends the connection without telling the peer or the handler. On the loop's thread, or while the
  // loop is not running.
  void close() EXCLUDES(mutex);
  // Ranks connections for when memory is short; the least is closed first. Refused peers come
  // first, then those with a large unfinished message, the oldest first, then those that hold the
  // most. On the loop's thread.
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
  // Returns the transaction once no request and no answer is pending, else null. The caller drops
  // it after the lock: its end may call out.
  [[nodiscard]] std::shared_ptr<ProcessTransaction> endedTransaction() REQUIRES(mutex);
  [[nodiscard]] bool mustWait() const REQUIRES(mutex);
  void continueSoon() REQUIRES(mutex);
  // Ends the connection when memory for an answer runs out. On any thread.
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
  // Those of the peer when the connection was accepted; null for none.
  const std::shared_ptr<const PropertyListDictionary> entitlements;
  const ClosedHandler onClosed;
  // Set before start().
  bool isRefused = false;
  // On the loop's thread only.
  std::shared_ptr<Input> input;
  // Since when the reader holds part of a message.
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
  // The unanswered requests whose replies can be long, and whether the next request is such a one.
  std::size_t unansweredLong GUARDED_BY(mutex) = 0;
  bool nextIsLong GUARDED_BY(mutex) = false;
  // A worker is adding pieces of replies, or will soon.
  bool sendingPieces GUARDED_BY(mutex) = false;
  // The request for the next worker to take; `largeRequestOpen` stays true until it is performed.
  std::shared_ptr<const LargeRequest> largeRequest GUARDED_BY(mutex);
  bool largeRequestOpen GUARDED_BY(mutex) = false;
  bool resumed GUARDED_BY(mutex) = false;
  // Held from the first request taken until no answer is pending or unsent.
  std::shared_ptr<ProcessTransaction> transaction GUARDED_BY(mutex);
  // Reading is paused: a limit is reached, a worker has the reader's bytes, or the service takes no
  // more. Complete requests may wait in the reader.
  bool paused GUARDED_BY(mutex) = false;
  bool continuationPosted GUARDED_BY(mutex) = false;
  // The loop's thread is dispatching, and will write the answers afterwards.
  bool dispatching GUARDED_BY(mutex) = false;
  // Nothing more can be written; the loop's thread will close the socket.
  bool abandoned GUARDED_BY(mutex) = false;
};

}  // namespace quenlet
