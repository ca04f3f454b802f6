#pragma once

#include <sys/epoll.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "platform/foundation/Mutex.h"
#include "platform/ipc/EntitlementDatabase.h"
#include "platform/ipc/FrameReader.h"
#include "platform/ipc/HeldBytes.h"
#include "platform/ipc/OutputQueue.h"
#include "platform/ipc/PeerIdentity.h"
#include "platform/ipc/RequestAdmission.h"
#include "platform/ipc/ServiceConnection.h"
#include "platform/ipc/ServiceLimits.h"
#include "platform/scheduling/EventLoop.h"
#include "platform/scheduling/FileDescriptor.h"

namespace quenlet {

// The service's side of one connected Unix socket. Reads, checks and dispatches requests on an
// event loop's thread. What is answered during the dispatch goes out in one piece after it; a later
// answer is written by the thread that has it. Thread-safe.
//
// A request that is wrong in itself is answered with a failure. A header that makes no sense, a
// peer that goes, and one that leaves too much unread end the connection, after which replies to it
// do nothing.
class UnixServiceConnection final : public ServiceConnection,
                                    public std::enable_shared_from_this<UnixServiceConnection> {
 public:
  // On the loop's thread, once, after the connection has ended by itself.
  using ClosedHandler = std::function<void(UnixServiceConnection&)>;

  UnixServiceConnection(std::shared_ptr<EventLoop> eventLoop, FileDescriptor connectedSocket,
                        PeerIdentity peerIdentity,
                        const std::shared_ptr<const EntitlementDatabase>& entitlementDatabase,
                        ServiceLimits serviceLimits, ClosedHandler closedHandler,
                        const std::shared_ptr<HeldBytes>& heldBytesOfAll = nullptr,
                        std::shared_ptr<const RequestAdmission> requestAdmission =
                            std::make_shared<const RequestAdmission>());
  UnixServiceConnection(const UnixServiceConnection&) = delete;
  UnixServiceConnection& operator=(const UnixServiceConnection&) = delete;

  [[nodiscard]] pid_t processIdentifier() const override { return peer.process; }
  [[nodiscard]] std::optional<std::filesystem::path> executable() const override {
    return peer.executable;
  }
  [[nodiscard]] std::optional<PropertyList> valueForEntitlement(
      const std::string& entitlement) const override;
  void setExportedInterface(ServiceInterface interface) override EXCLUDES(mutex);
  void setExportedObject(std::shared_ptr<ExportedObject> object) override EXCLUDES(mutex);
  void resume() override EXCLUDES(mutex);

  // Waits for the peer to go, from now on; requests wait for resume(). Once.
  void start() EXCLUDES(mutex);
  // Takes what has come already, without a wait of the loop for it. On the loop's thread.
  void readAtOnce() EXCLUDES(mutex) { onReady(EPOLLIN); }
  // Ends the connection without a word. On the loop's thread, or when the loop does not run.
  void close() EXCLUDES(mutex);
  // Of messages that are not whole yet, and of answers that are not sent. On the loop's thread.
  [[nodiscard]] std::size_t heldBytes() EXCLUDES(mutex);

 private:
  class PendingReply;

  void onReady(std::uint32_t events) EXCLUDES(mutex);
  void readOnce(int socket) EXCLUDES(mutex);
  void continueReading() EXCLUDES(mutex);
  void dispatchFrames() EXCLUDES(mutex);
  void dispatch(const FrameReader::Frame& frame) EXCLUDES(mutex);
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
  void answer(FrameKind kind, std::uint64_t identifier, std::string body) EXCLUDES(mutex);
  void fail(std::uint64_t identifier, const ErrorPtr& error) EXCLUDES(mutex);
  void enqueue(FrameKind kind, std::uint64_t identifier, std::string body) REQUIRES(mutex);
  void flush() REQUIRES(mutex);
  void abandon() REQUIRES(mutex);
  [[nodiscard]] std::uint32_t wantedEvents() const REQUIRES(mutex);
  void updateWatch() REQUIRES(mutex);

  const std::shared_ptr<EventLoop> loop;
  const PeerIdentity peer;
  // As they were when the connection was accepted; null for none.
  const std::shared_ptr<const PropertyListDictionary> entitlements;
  const ServiceLimits limits;
  const ClosedHandler onClosed;
  const std::shared_ptr<const RequestAdmission> admission;
  // On the loop's thread only.
  FrameReader reader;
  HeldBytes::Part heldInput;
  std::size_t requestsInTurn = 0;

  Mutex mutex;
  FileDescriptor descriptor GUARDED_BY(mutex);
  std::shared_ptr<EventLoop::Watch> watch GUARDED_BY(mutex);
  std::shared_ptr<const ServiceInterface> exportedInterface GUARDED_BY(mutex);
  std::shared_ptr<ExportedObject> exportedObject GUARDED_BY(mutex);
  OutputQueue output GUARDED_BY(mutex);
  HeldBytes::Part heldOutput GUARDED_BY(mutex);
  std::size_t unanswered GUARDED_BY(mutex) = 0;
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
