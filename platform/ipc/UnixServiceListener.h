#pragma once

#include <sys/types.h>

#include <memory>
#include <optional>
#include <string>
#include <thread>
#include <unordered_map>
#include <utility>

#include "platform/files/LockFile.h"
#include "platform/foundation/Mutex.h"
#include "platform/ipc/HandedSockets.h"
#include "platform/ipc/ServiceAddress.h"
#include "platform/ipc/ServiceContext.h"
#include "platform/ipc/ServiceListener.h"
#include "platform/ipc/UnixServiceConnection.h"
#include "platform/scheduling/EventLoopScheduler.h"

namespace quenlet {

// Serves a name on a Unix socket in the user's runtime directory, with a thread of its own that
// accepts, reads and dispatches. The name is exclusive: a lock file tells a running listener from
// the socket that a crashed one left behind. Thread-safe; call resume() once.
//
// A socket of that name which a service manager has handed over is used as it is, and stays:
// clients go on connecting to it between two listeners. One at which a service manager listens
// for somebody else is never replaced.
//
// Peers of other users, except root, are disconnected at once; a connection beyond the limit gets
// an error first. When the connections hold too much memory, some are closed, in the order of
// UnixServiceConnection::Standing. The destructor ends all connections; it must not run on the
// listener's own thread.
class UnixServiceListener final : public ServiceListener {
 public:
  // `beginTransaction`, which may be null, is called on the listener's thread before a connection's
  // requests are taken. The transaction ends once their answers are sent, or with the connection.
  UnixServiceListener(std::string serviceName,
                      std::shared_ptr<const EntitlementDatabase> entitlementDatabase,
                      ServiceLimits serviceLimits = {},
                      RequestAdmission::Begin beginTransaction = nullptr,
                      HandedSockets handedSockets = {});
  ~UnixServiceListener() override;
  UnixServiceListener(const UnixServiceListener&) = delete;
  UnixServiceListener& operator=(const UnixServiceListener&) = delete;

  void setDelegate(std::weak_ptr<ServiceListenerDelegate> newDelegate) override EXCLUDES(mutex);
  [[nodiscard]] ErrorPtr claimName() override;
  [[nodiscard]] bool mayHaveClients() const override;
  [[nodiscard]] ErrorPtr resume() override;
  void suspend() override { context->admission->suspend(); }

 private:
  [[nodiscard]] ErrorPtr listen();
  [[nodiscard]] ErrorPtr bindSocket();
  void acceptConnection();
  void admit(FileDescriptor socket) EXCLUDES(mutex);
  void refuseOne(int failure);
  void refuse(FileDescriptor socket);
  void resumeAccepting();
  [[nodiscard]] bool isFull() const;
  void connectionClosed(UnixServiceConnection& connection);
  void relieveMemory();

  const std::string name;
  const std::shared_ptr<EventLoop> loop = std::make_shared<EventLoop>();
  EventLoopScheduler timers{*loop};
  const std::shared_ptr<ServiceContext> context;

  Mutex mutex;
  std::weak_ptr<ServiceListenerDelegate> delegate GUARDED_BY(mutex);

  // Set by claimName() and resume(), then used by the listener's thread only until it has ended.
  std::optional<ServiceAddress> address;
  std::shared_ptr<LockFile> nameLock;
  HandedSockets handed;
  // Empty while the socket's file is not ours.
  std::filesystem::path boundPath;
  std::pair<dev_t, ino_t> boundFile;
  FileDescriptor listeningSocket;
  bool wasHanded = false;
  // Without descriptors, closed for a moment to accept a connection and refuse it.
  FileDescriptor spareDescriptor;
  std::shared_ptr<EventLoop::Watch> watch;
  // Not null while accepting is paused.
  std::shared_ptr<Cancelable> nextAttempt;
  std::unordered_map<UnixServiceConnection*, std::shared_ptr<UnixServiceConnection>> connections;
  std::thread thread;
};

}  // namespace quenlet
