#pragma once

#include <memory>
#include <optional>
#include <string>
#include <thread>
#include <unordered_map>

#include "platform/files/LockFile.h"
#include "platform/foundation/Mutex.h"
#include "platform/ipc/ServiceAddress.h"
#include "platform/ipc/ServiceContext.h"
#include "platform/ipc/ServiceListener.h"
#include "platform/ipc/UnixServiceConnection.h"
#include "platform/scheduling/EventLoopScheduler.h"

namespace quenlet {

// Serves a name on a Unix socket in the user's runtime directory, with a thread of its own that
// accepts, reads and dispatches. The name is exclusive: a lock file tells a living listener from
// what a crashed one left. Thread-safe; resume() is for one call.
//
// Peers of other users than root are disconnected at once; a connection beyond the limit is told so
// first. When all hold too much memory, refused peers go first, then whoever has kept a message
// unfinished for the longest time. The end of the listener ends all its connections; it is not for
// its own thread.
class UnixServiceListener final : public ServiceListener {
 public:
  // `beginTransaction` (none for null) is called on the listener's thread when a connection's
  // requests are taken; what it gives lives until their answers have left or the connection ends.
  UnixServiceListener(std::string serviceName,
                      std::shared_ptr<const EntitlementDatabase> entitlementDatabase,
                      ServiceLimits serviceLimits = {},
                      RequestAdmission::Begin beginTransaction = nullptr);
  ~UnixServiceListener() override;
  UnixServiceListener(const UnixServiceListener&) = delete;
  UnixServiceListener& operator=(const UnixServiceListener&) = delete;

  void setDelegate(std::weak_ptr<ServiceListenerDelegate> newDelegate) override EXCLUDES(mutex);
  [[nodiscard]] ErrorPtr claimName() override;
  [[nodiscard]] ErrorPtr resume() override;
  void suspend() override { context->admission->suspend(); }

 private:
  [[nodiscard]] ErrorPtr openSocket(const ServiceAddress& at);
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

  // Set by claimName() and resume(), then the thread's own until it has ended.
  std::optional<ServiceAddress> address;
  std::shared_ptr<LockFile> nameLock;
  std::filesystem::path socketPath;
  FileDescriptor listeningSocket;
  // Given up for a moment to accept, and refuse, one when the process has no descriptor left.
  FileDescriptor spareDescriptor;
  std::shared_ptr<EventLoop::Watch> watch;
  // Not null while accepting is paused.
  std::shared_ptr<Cancelable> nextAttempt;
  std::unordered_map<UnixServiceConnection*, std::shared_ptr<UnixServiceConnection>> connections;
  std::thread thread;
};

}  // namespace quenlet
