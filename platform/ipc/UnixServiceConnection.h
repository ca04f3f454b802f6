#pragma once

#include <sys/epoll.h>

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "platform/foundation/Mutex.h"
#include "platform/ipc/ExportedService.h"
#include "platform/ipc/PeerIdentity.h"
#include "platform/ipc/ReplyWriter.h"
#include "platform/ipc/RequestAccount.h"
#include "platform/ipc/ServiceContext.h"
#include "platform/ipc/ServiceListener.h"

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
  void setPeerTreatment(PeerTreatment treatment) override EXCLUDES(mutex);
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

  void onReady(std::uint32_t events) EXCLUDES(mutex);
  void readOnce(int socket) EXCLUDES(mutex);
  void takeRequests() EXCLUDES(mutex);
  [[nodiscard]] std::optional<FrameReader::Frame> nextMessage() EXCLUDES(mutex);
  [[nodiscard]] bool leaveToWorker(const FrameReader::Frame& frame) EXCLUDES(mutex);
  void performLargeRequest() EXCLUDES(mutex);
  void perform(const FrameReader::Frame& frame) EXCLUDES(mutex);
  void answer(const PendingReply& pending, FrameKind kind, std::string body) EXCLUDES(mutex);
  void answerInPieces(const PendingReply& pending, EncodedReplyPtr reply) EXCLUDES(mutex);
  // To be called after every change of the account or the output, before the lock is let go. The
  // caller drops the transaction, which may be null, after the lock: its end may call out.
  [[nodiscard]] std::shared_ptr<ProcessTransaction> settle() REQUIRES(mutex);
  void sendPieces() EXCLUDES(mutex);
  [[nodiscard]] bool sendPiece() EXCLUDES(mutex);
  [[nodiscard]] bool isOpen() EXCLUDES(mutex);
  // Ends the connection when memory for an answer runs out. On any thread.
  void giveUp() EXCLUDES(mutex);
  void closeByItself() EXCLUDES(mutex);
  // Those of epoll, as the account and the output are now.
  [[nodiscard]] std::uint32_t awaitedEvents() const REQUIRES(mutex);
  void updateWatch() REQUIRES(mutex);

  const std::shared_ptr<const ServiceContext> context;
  const ServiceLimits& limits;
  const PeerIdentity peer;
  // Those of the peer when the connection was accepted; null for none.
  const std::shared_ptr<const PropertyListDictionary> entitlements;
  const ClosedHandler onClosed;
  // On the loop's thread, and on that of the worker that takes `largeRequest`, which is in it.
  std::shared_ptr<Input> input;

  Mutex mutex;
  bool resumed GUARDED_BY(mutex) = false;
  ExportedService exported GUARDED_BY(mutex);
  ReplyWriter output GUARDED_BY(mutex);
  RequestAccount account GUARDED_BY(mutex);
  std::shared_ptr<EventLoop::Watch> watch GUARDED_BY(mutex);
  // The request for the next worker to take.
  std::optional<FrameReader::Frame> largeRequest GUARDED_BY(mutex);
};

}  // namespace quenlet
