#include "platform/files/DirectoryWatch.h"

#include <sys/epoll.h>
#include <sys/inotify.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <set>
#include <utility>

#include "platform/files/DurableDirectory.h"
#include "platform/files/PosixFileOperations.h"
#include "platform/foundation/FileDescriptor.h"
#include "platform/foundation/Mutex.h"
#include "platform/foundation/StandardStreams.h"
#include "platform/scheduling/EventLoopScheduler.h"
#include "quenlet/Error.h"

namespace quenlet {
namespace {

using std::filesystem::path;

constexpr std::uint32_t entryEvents =
    IN_CREATE | IN_CLOSE_WRITE | IN_ATTRIB | IN_MOVED_FROM | IN_MOVED_TO | IN_DELETE;
constexpr std::uint32_t directoryEvents = IN_DELETE_SELF | IN_MOVE_SELF;
// Those two, and the events that the kernel sends after it has dropped the watch itself.
constexpr std::uint32_t lossEvents = directoryEvents | IN_IGNORED | IN_UNMOUNT;

// The events of one read from the inotify descriptor, merged.
struct Changes {
  std::set<std::string> names;
  bool anything = false;
  bool directoryLost = false;
};

// Whether a missing directory is ours to create.
enum class Ownership { own, foreign };

// Kept alive by the loop's watch and the pending retry. The first start() runs before either
// exists, everything else on the loop's thread; only cancel() may run on any thread.
//
//   start ──> establish ──ok──> watch inotify ──event──> handleChanges ──> handler
//               ^  └──failure──> retryLater ──> retry           │
//               └────────── the directory was lost ─────────────┘
class WatchState final : public std::enable_shared_from_this<WatchState> {
 public:
  WatchState(EventLoop& eventLoop, path watched, Ownership whose,
             DirectoryWatch::Handler changeHandler, double retryAfterSeconds)
      : loop(eventLoop),
        directory(std::move(watched)),
        ownership(whose),
        handler(std::move(changeHandler)),
        retrySeconds(retryAfterSeconds),
        retries(eventLoop) {}

  void start() {
    if (const int failure = establish()) return retryLater(failure);
    if (std::exchange(listening, true)) return;
    keep(watchToken, loop.watch(inotify.get(), EPOLLIN,
                                [self = shared_from_this()](auto) { self->handleChanges(); }));
  }

  void cancel() EXCLUDES(mutex) {
    std::array<std::shared_ptr<Cancelable>, 2> taken;
    {
      MutexLock lock(mutex);
      cancelled = true;
      taken.swap(tokens);
    }
    for (const auto& token : taken) {
      if (token) token->cancel();
    }
  }

 private:
  static constexpr std::size_t watchToken = 0;
  static constexpr std::size_t retryToken = 1;

  // Puts a token where cancel() finds it; cancels it at once if cancel() has already run.
  void keep(std::size_t place, std::shared_ptr<Cancelable> token) EXCLUDES(mutex) {
    {
      MutexLock lock(mutex);
      if (!cancelled) {
        tokens[place] = std::move(token);
        return;
      }
    }
    token->cancel();
  }

  [[nodiscard]] bool isCancelled() EXCLUDES(mutex) {
    MutexLock lock(mutex);
    return cancelled;
  }

  // 0 or an errno value.
  [[nodiscard]] int establish() {
    if (!inotify.isOpen()) inotify.reset(::inotify_init1(IN_CLOEXEC | IN_NONBLOCK));
    if (!inotify.isOpen()) return errno;
    if (ownership == Ownership::foreign) return establishNearest();
    PosixFileOperations operations;
    if (const int failure = DurableDirectory::ensure(operations, directory)) return failure;
    return addWatch(directory);
  }

  [[nodiscard]] int addWatch(const path& present) {
    watchDescriptor = ::inotify_add_watch(inotify.get(), present.c_str(),
                                          entryEvents | directoryEvents | IN_ONLYDIR);
    return watchDescriptor < 0 ? errno : 0;
  }

  // Watches the directory or, while it is missing, the nearest existing one above it, for the
  // appearance of the next part of the path. That part may have appeared just before the watch was
  // in place, so it is looked for once more afterwards.
  [[nodiscard]] int establishNearest() {
    path present = directory;
    awaitedName.clear();
    int failure = addWatch(present);
    while (failure == ENOENT && present.has_relative_path()) {
      const path next = present;
      awaitedName = next.filename().native();
      present = next.parent_path();
      failure = addWatch(present);
      std::error_code ignored;
      if (failure == 0 && std::filesystem::is_directory(next, ignored)) {
        ::inotify_rm_watch(inotify.get(), watchDescriptor);
        present = directory;
        awaitedName.clear();
        failure = addWatch(present);
      }
    }
    return failure;
  }

  void retryLater(int failure) {
    if (!std::exchange(failureReported, true)) {
      const std::string name = directory.filename().string();
      StandardStreams::writeError("quenlet: " +
                                  makePosixError(failure, "watch " + name)->description());
    }
    keep(retryToken,
         retries.afterDelay(retrySeconds, [self = shared_from_this()] { self->retry(); }));
  }

  void retry() {
    start();
    if (watchDescriptor >= 0 && !isCancelled()) handler(std::string());
  }

  void handleChanges() {
    Changes changes = readChanges();
    if (!awaitedName.empty()) {
      const bool concernsUs = changes.anything || changes.names.contains(awaitedName);
      if (!concernsUs && !changes.directoryLost) return;
      changes.directoryLost = true;  // another directory must be watched now
    }
    if (changes.directoryLost) {
      ::inotify_rm_watch(inotify.get(), watchDescriptor);  // a moved directory is still watched
      if (const int failure = establish()) retryLater(failure);
    }
    if (changes.anything || changes.directoryLost) {
      if (!isCancelled()) handler(std::string());
      return;
    }
    for (const std::string& name : changes.names) {
      if (isCancelled()) return;
      handler(name);
    }
  }

  [[nodiscard]] Changes readChanges() const {
    Changes changes;
    std::array<char, 65536> buffer;
    const ssize_t size = ::read(inotify.get(), buffer.data(), buffer.size());
    const char* const end = buffer.data() + std::max<ssize_t>(size, 0);
    for (const char* next = buffer.data(); next < end;) {
      inotify_event event;
      std::memcpy(&event, next, sizeof event);
      const char* name = next + sizeof event;
      next = name + event.len;
      // An overflow belongs to no watch (wd is -1), so it is tested first.
      if ((event.mask & IN_Q_OVERFLOW) != 0) changes.anything = true;
      if (event.wd != watchDescriptor) continue;  // from a watch that was given up
      if ((event.mask & lossEvents) != 0) changes.directoryLost = true;
      if ((event.mask & entryEvents) != 0) changes.names.emplace(name, ::strnlen(name, event.len));
    }
    return changes;
  }

  EventLoop& loop;
  const path directory;
  const Ownership ownership;
  const DirectoryWatch::Handler handler;
  const double retrySeconds;
  // The entry for which a directory above is watched; empty while the directory itself is watched.
  std::string awaitedName;
  EventLoopScheduler retries;
  FileDescriptor inotify;
  int watchDescriptor = -1;
  bool listening = false;
  bool failureReported = false;
  Mutex mutex;
  std::array<std::shared_ptr<Cancelable>, 2> tokens GUARDED_BY(mutex);
  bool cancelled GUARDED_BY(mutex) = false;
};

std::shared_ptr<Cancelable> startWatch(EventLoop& loop, path directory, Ownership ownership,
                                       DirectoryWatch::Handler handler, double retryAfterSeconds) {
  const auto state = std::make_shared<WatchState>(loop, std::move(directory), ownership,
                                                  std::move(handler), retryAfterSeconds);
  state->start();
  return std::make_shared<CancelBlock>([state] { state->cancel(); });
}

}  // namespace

std::shared_ptr<Cancelable> DirectoryWatch::watchDirectory(EventLoop& loop, path directory,
                                                           Handler handler,
                                                           double retryAfterSeconds) {
  return startWatch(loop, std::move(directory), Ownership::own, std::move(handler),
                    retryAfterSeconds);
}

std::shared_ptr<Cancelable> DirectoryWatch::watchForeignDirectory(EventLoop& loop, path directory,
                                                                  Handler handler) {
  return startWatch(loop, std::move(directory), Ownership::foreign, std::move(handler),
                    retrySeconds);
}

}  // namespace quenlet
