#include "platform/notifications/SocketNotificationCenter.h"

#include <sys/epoll.h>
#include <sys/socket.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <map>
#include <set>
#include <utility>
#include <vector>

#include "platform/foundation/Mutex.h"
#include "platform/foundation/StandardStreams.h"
#include "platform/notifications/NotificationReceiver.h"
#include "platform/scheduling/PatientThread.h"

namespace quenlet {
namespace {

struct NotificationObserver final {
  std::string name;
  std::function<void()> callback;
  std::atomic<bool> cancelled = false;
};
using ObserverPtr = std::shared_ptr<NotificationObserver>;

// Zero, or errno.
int sendName(const FileDescriptor& socket, const std::string& name) {
  const ssize_t sent = ::send(socket.get(), name.data(), name.size(), MSG_DONTWAIT | MSG_NOSIGNAL);
  return sent < 0 ? errno : 0;
}

}  // namespace

struct SocketNotificationCenter::State final : std::enable_shared_from_this<State> {
  // Names that did not fit into the full queue of another process.
  struct Backlog {
    FileDescriptor socket;
    std::set<std::string> names;
    std::shared_ptr<EventLoop::Watch> watch;
  };

  State(EventLoop& loop, std::filesystem::path path)
      : eventLoop(loop), directoryPath(std::move(path)) {}

  EventLoop& eventLoop;
  const std::filesystem::path directoryPath;
  std::atomic<bool> hasReported = false;
  Mutex mutex;
  // This process's own; null until its first observer.
  std::shared_ptr<NotificationReceiver> receiver GUARDED_BY(mutex);
  std::multimap<std::string, ObserverPtr, std::less<>> observers GUARDED_BY(mutex);
  std::map<std::string, Backlog> backlogs GUARDED_BY(mutex);  // by the receiver's socket name
  PatientThread sender{PatientThread::Start::whenNeeded};
  ConditionVariable changed;
  std::vector<std::string> posted GUARDED_BY(mutex);  // not sent yet, each name once
  bool isSending GUARDED_BY(mutex) = false;
  bool isClosed GUARDED_BY(mutex) = false;

  void report(const ErrorPtr& error) {
    if (!error || hasReported.exchange(true)) return;
    StandardStreams::writeError("quenlet: notifications: " + error->description());
  }

  ErrorPtr openReceiver() REQUIRES(mutex) {
    const auto opened = NotificationReceiver::open(
        eventLoop, directoryPath, [weak = weak_from_this()](const std::string& name) {
          if (const auto state = weak.lock()) state->notify(name);
        });
    if (!opened.ok()) return opened.error();
    receiver = opened.value();
    return nullptr;
  }

  ErrorPtr add(const ObserverPtr& observer) EXCLUDES(mutex) {
    MutexLock lock(mutex);
    observers.emplace(observer->name, observer);
    return receiver || isClosed ? nullptr : openReceiver();
  }

  void remove(const ObserverPtr& observer) EXCLUDES(mutex) {
    MutexLock lock(mutex);
    const auto [begin, end] = observers.equal_range(observer->name);
    for (auto entry = begin; entry != end; ++entry) {
      if (entry->second == observer) {
        observers.erase(entry);
        return;
      }
    }
  }

  void notify(const std::string& name) EXCLUDES(mutex) {
    std::vector<ObserverPtr> called;
    {
      MutexLock lock(mutex);
      const auto [begin, end] = observers.equal_range(name);
      for (auto entry = begin; entry != end; ++entry) called.push_back(entry->second);
    }
    // Without the lock. A callback may cancel the observers that come after it.
    for (const ObserverPtr& observer : called) {
      if (!observer->cancelled) observer->callback();
    }
  }

  void post(const std::string& name) EXCLUDES(mutex) {
    {
      MutexLock lock(mutex);
      if (isClosed || std::find(posted.begin(), posted.end(), name) != posted.end()) return;
      posted.push_back(name);
      if (std::exchange(isSending, true)) return;
    }
    sender.perform([self = shared_from_this()] { self->sendPosted(); });
  }

  void sendPosted() EXCLUDES(mutex) {
    while (true) {
      std::vector<std::string> names;
      {
        MutexLock lock(mutex);
        names.swap(posted);
        if (names.empty()) {
          isSending = false;
          changed.notifyAll();
          return;
        }
      }
      for (const std::string& name : names) report(sendToAll(name));
    }
  }

  ErrorPtr sendToAll(const std::string& name) EXCLUDES(mutex) {
    std::shared_ptr<const NotificationDirectory> directory;
    std::string withoutObserver;  // this process, if nobody here observes the name
    {
      MutexLock lock(mutex);
      if (receiver) directory = receiver->directory();
      if (receiver && !observers.contains(name)) withoutObserver = receiver->socketName();
    }
    // Another directory may have taken its place since, with the sockets of later processes.
    if (!directory || !directory->isPrivateAt(directoryPath)) {
      Result<NotificationDirectory> opened = NotificationDirectory::open(directoryPath);
      if (!opened.ok()) return opened.error();
      directory = std::make_shared<const NotificationDirectory>(std::move(opened).takeValue());
    }
    for (const std::string& socketName : directory->socketNames()) {
      if (socketName != withoutObserver) sendToOne(*directory, socketName, name);
    }
    return nullptr;
  }

  bool addToBacklog(const std::string& socketName, const std::string& name) EXCLUDES(mutex) {
    MutexLock lock(mutex);
    const auto found = backlogs.find(socketName);
    if (found == backlogs.end()) return false;
    found->second.names.insert(name);
    return true;
  }

  // Each datagram gets its own sending socket: the kernel charges unread datagrams to the sender's
  // buffer, and one slow receiver must not use up the room for all others.
  void sendToOne(const NotificationDirectory& directory, const std::string& socketName,
                 const std::string& name) EXCLUDES(mutex) {
    if (addToBacklog(socketName, name)) return;
    Result<FileDescriptor> socket = directory.connectSocket(socketName);
    if (!socket.ok()) {
      if (socket.error()->code() == ECONNREFUSED) directory.removeSocket(socketName);
      return;
    }
    if (sendName(socket.value(), name) == EAGAIN) {
      startBacklog(socketName, std::move(socket).takeValue(), name);
    }
  }

  void startBacklog(const std::string& socketName, FileDescriptor socket, const std::string& name)
      EXCLUDES(mutex) {
    MutexLock lock(mutex);
    if (isClosed || backlogs.size() >= maximumBacklogs) return;
    Backlog& backlog = backlogs[socketName];
    backlog.socket = std::move(socket);
    backlog.names = {name};
    // A connected datagram socket becomes writable when its receiver has room or is gone.
    backlog.watch = eventLoop.watch(backlog.socket.get(), EPOLLOUT,
                                    [weak = weak_from_this(), socketName](std::uint32_t) {
                                      if (const auto state = weak.lock()) state->flush(socketName);
                                    });
  }

  void flush(const std::string& socketName) EXCLUDES(mutex) {
    MutexLock lock(mutex);
    const auto found = backlogs.find(socketName);
    if (found == backlogs.end()) return;
    Backlog& backlog = found->second;
    while (!backlog.names.empty()) {
      const int failure = sendName(backlog.socket, *backlog.names.begin());
      if (failure == EAGAIN) return;
      if (failure != 0) break;  // the receiver is gone
      backlog.names.erase(backlog.names.begin());
    }
    backlog.watch->cancel();
    backlogs.erase(found);
  }

  void close() EXCLUDES(mutex) {
    constexpr std::chrono::seconds patience(1);
    const auto deadline = std::chrono::steady_clock::now() + patience;
    MutexLock lock(mutex);
    isClosed = true;
    // Since isClosed, post() adds nothing, so this wait is for the posts so far.
    while (isSending && changed.waitUntil(mutex, deadline)) {
    }
    for (auto& [socketName, backlog] : backlogs) backlog.watch->cancel();
    backlogs.clear();
    if (!receiver) return;
    receiver->close();
    receiver.reset();
  }
};

SocketNotificationCenter::SocketNotificationCenter(EventLoop& eventLoop,
                                                   std::filesystem::path directory)
    : state(std::make_shared<State>(eventLoop, std::move(directory))) {}

SocketNotificationCenter::~SocketNotificationCenter() { state->close(); }

void SocketNotificationCenter::finish() { state->close(); }

std::shared_ptr<Cancelable> SocketNotificationCenter::addObserver(const std::string& name,
                                                                  std::function<void()> callback) {
  const auto observer = std::make_shared<NotificationObserver>();
  observer->name = name;
  observer->callback = std::move(callback);
  state->report(state->add(observer));
  return std::make_shared<CancelBlock>([weak = std::weak_ptr<State>(state), observer] {
    observer->cancelled = true;
    if (const auto held = weak.lock()) held->remove(observer);
  });
}

void SocketNotificationCenter::post(const std::string& name) {
  if (NotificationReceiver::isNotificationName(name)) state->post(name);
}

}  // namespace quenlet
