#include "platform/scheduling/EventLoop.h"

#include <sys/epoll.h>
#include <sys/eventfd.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <map>
#include <span>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

#include "platform/foundation/FileDescriptor.h"
#include "platform/foundation/Mutex.h"
#include "platform/scheduling/runGuarded.h"

namespace quenlet {
namespace {

// run() repeats two steps; handlers and blocks always run without the lock:
//
//   post(), stop() ──> posted ──> run the batch; if a stop was requested, return
//        │
//        └─ eventfd ─┐
//   descriptors ─────┴─> epoll_wait ──> number of a watch ──> its entry, if still there ──> handler
//
// Events carry the number of the watch and not the descriptor: the event of a watch that has been
// cancelled since cannot reach a new watch on a descriptor with the same value.
constexpr std::uint64_t wakeupIdentifier = 0;

FileDescriptor opened(int descriptor, const char* action) {
  if (descriptor < 0) throw std::system_error(errno, std::generic_category(), action);
  return FileDescriptor(descriptor);
}

}  // namespace

struct EventLoop::State {
  struct Entry {
    int descriptor;
    std::uint32_t events;  // 0 while paused; then epoll does not know the descriptor
    std::shared_ptr<const Handler> handler;
  };

  FileDescriptor epoll = opened(::epoll_create1(EPOLL_CLOEXEC), "create an epoll descriptor");
  FileDescriptor wakeup = opened(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK), "create an eventfd");
  std::atomic<std::thread::id> loopThread;
  Mutex mutex;
  std::map<std::uint64_t, Entry> entries GUARDED_BY(mutex);
  std::uint64_t lastIdentifier GUARDED_BY(mutex) = wakeupIdentifier;
  std::vector<Block> posted GUARDED_BY(mutex);
  bool stopRequested GUARDED_BY(mutex) = false;

  bool control(int operation, std::uint64_t identifier, int descriptor, std::uint32_t events) {
    epoll_event event{};
    event.events = events;
    event.data.u64 = identifier;
    return ::epoll_ctl(epoll.get(), operation, descriptor, &event) == 0;
  }

  // An eventfd refuses a write only when it is signalled already, so failure does not matter.
  void wake() const {
    const std::uint64_t one = 1;
    [[maybe_unused]] const ssize_t written = ::write(wakeup.get(), &one, sizeof one);
  }

  void clearWakeup() const {
    std::uint64_t count = 0;
    [[maybe_unused]] const ssize_t taken = ::read(wakeup.get(), &count, sizeof count);
  }

  void postBlock(Block block) EXCLUDES(mutex) {
    MutexLock lock(mutex);
    posted.push_back(std::move(block));
    // Later blocks join this one: the loop takes all of them after it has cleared the wake-up.
    if (posted.size() == 1) wake();
  }

  // Reports a refusal of the kernel (no memory, too many watches) as an error of the descriptor.
  // Posted, since the caller of watch() or setEvents() may hold locks that the handler takes.
  static void reportRefusal(const std::shared_ptr<State>& state, std::uint64_t identifier) {
    state->postBlock([weak = std::weak_ptr<State>(state), identifier] {
      if (const auto held = weak.lock()) held->deliver(identifier, EPOLLERR);
    });
  }

  bool changeEvents(std::uint64_t identifier, std::uint32_t events) EXCLUDES(mutex) {
    MutexLock lock(mutex);
    const auto found = entries.find(identifier);
    if (found == entries.end() || found->second.events == events) return true;
    Entry& entry = found->second;
    const std::uint32_t before = std::exchange(entry.events, events);
    if (events == 0) return control(EPOLL_CTL_DEL, identifier, entry.descriptor, 0);
    return control(before == 0 ? EPOLL_CTL_ADD : EPOLL_CTL_MOD, identifier, entry.descriptor,
                   events);
  }

  void remove(std::uint64_t identifier) EXCLUDES(mutex) {
    std::shared_ptr<const Handler> dropped;  // outlives the lock: its destructor may call back
    MutexLock lock(mutex);
    const auto found = entries.find(identifier);
    if (found == entries.end()) return;
    if (found->second.events != 0) {
      control(EPOLL_CTL_DEL, identifier, found->second.descriptor, 0);
    }
    dropped = std::move(found->second.handler);
    entries.erase(found);
  }

  void deliver(std::uint64_t identifier, std::uint32_t ready) EXCLUDES(mutex) {
    std::shared_ptr<const Handler> handler;
    {
      MutexLock lock(mutex);
      const auto found = entries.find(identifier);
      // An earlier handler of the same turn may have cancelled, paused or changed this watch.
      if (found == entries.end() || found->second.events == 0) return;
      ready &= found->second.events | EPOLLERR | EPOLLHUP;
      if (ready != 0) handler = found->second.handler;
    }
    if (handler) runGuarded(*handler, ready);
  }

  // Runs the blocks posted so far; true when a stop was requested by then.
  bool runPostedBlocks() EXCLUDES(mutex) {
    std::vector<Block> batch;
    bool stopping = false;
    {
      MutexLock lock(mutex);
      batch.swap(posted);
      stopping = std::exchange(stopRequested, false);
    }
    for (Block& block : batch) runGuarded(std::exchange(block, nullptr));
    return stopping;
  }

  // Waits as epoll_wait() does: 0 not at all, -1 for as long as it takes.
  void waitForEvents(int milliseconds) {
    std::array<epoll_event, 64> ready{};
    const int count = ::epoll_wait(epoll.get(), ready.data(), ready.size(), milliseconds);
    if (count < 0) {
      if (errno == EINTR) return;
      throw std::system_error(errno, std::generic_category(), "wait for events");
    }
    for (const epoll_event& event : std::span(ready).first(static_cast<std::size_t>(count))) {
      if (event.data.u64 == wakeupIdentifier) {
        clearWakeup();
      } else {
        deliver(event.data.u64, event.events);
      }
    }
  }
};

namespace {

class LoopWatch final : public EventLoop::Watch {
 public:
  using Operation = std::function<void(std::uint32_t)>;
  LoopWatch(Operation change, Block end)
      : changeEvents(std::move(change)), remove(std::move(end)) {}

  void setEvents(std::uint32_t events) override { changeEvents(events); }
  void cancel() override { remove(); }

 private:
  const Operation changeEvents;
  const Block remove;
};

}  // namespace

EventLoop::EventLoop() : state(std::make_shared<State>()) {
  if (!state->control(EPOLL_CTL_ADD, wakeupIdentifier, state->wakeup.get(), EPOLLIN)) {
    throw std::system_error(errno, std::generic_category(), "watch an eventfd");
  }
}

EventLoop::~EventLoop() {
  // Declared before the lock, so destroyed after it is released: handlers and blocks may own
  // watches of this loop, whose end takes the lock.
  std::map<std::uint64_t, State::Entry> entries;
  std::vector<Block> posted;
  MutexLock lock(state->mutex);
  entries.swap(state->entries);
  posted.swap(state->posted);
}

std::shared_ptr<EventLoop::Watch> EventLoop::watch(int descriptor, std::uint32_t events,
                                                   Handler handler) {
  std::uint64_t identifier = 0;
  {
    MutexLock lock(state->mutex);
    identifier = ++state->lastIdentifier;
    state->entries[identifier] = {descriptor, 0,
                                  std::make_shared<const Handler>(std::move(handler))};
  }
  const auto change = [weak = std::weak_ptr<State>(state), identifier](std::uint32_t wanted) {
    const auto held = weak.lock();
    if (held && !held->changeEvents(identifier, wanted)) State::reportRefusal(held, identifier);
  };
  change(events);
  return std::make_shared<LoopWatch>(change, [weak = std::weak_ptr<State>(state), identifier] {
    if (const auto held = weak.lock()) held->remove(identifier);
  });
}

void EventLoop::post(Block block) { state->postBlock(std::move(block)); }

void EventLoop::run() {
  const std::shared_ptr<State> running = state;
  running->loopThread = std::this_thread::get_id();
  while (!running->runPostedBlocks()) running->waitForEvents(-1);
  running->loopThread = std::thread::id();
}

void EventLoop::dispatch() {
  const std::shared_ptr<State> running = state;
  running->loopThread = std::this_thread::get_id();
  running->waitForEvents(0);
  running->runPostedBlocks();
  running->loopThread = std::thread::id();
}

int EventLoop::descriptor() const { return state->epoll.get(); }

void EventLoop::stop() {
  MutexLock lock(state->mutex);
  state->stopRequested = true;
  state->wake();
}

bool EventLoop::isLoopThread() const { return state->loopThread == std::this_thread::get_id(); }

}  // namespace quenlet
