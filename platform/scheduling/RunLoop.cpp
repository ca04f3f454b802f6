#include "platform/scheduling/RunLoop.h"

#include <sys/epoll.h>
#include <sys/signalfd.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <map>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

#include "platform/foundation/FileDescriptor.h"
#include "platform/foundation/Mutex.h"
#include "platform/foundation/StandardStreams.h"
#include "platform/scheduling/EventLoopScheduler.h"

namespace quenlet {
namespace {

FileDescriptor takeOverSignals() {
  sigset_t signals;
  sigemptyset(&signals);
  for (const int signal : {SIGHUP, SIGTERM, SIGINT}) sigaddset(&signals, signal);
  ::pthread_sigmask(SIG_BLOCK, &signals, nullptr);
  ::signal(SIGPIPE, SIG_IGN);
  ::signal(SIGXFSZ, SIG_IGN);  // a write beyond the limit of file sizes fails like any other
  ::signal(SIGCHLD, SIG_DFL);  // when ignored, children could not be waited for
  const int descriptor = ::signalfd(-1, &signals, SFD_CLOEXEC | SFD_NONBLOCK);
  if (descriptor < 0) throw std::system_error(errno, std::generic_category(), "read signals");
  return FileDescriptor(descriptor);
}

// The current holds, by name. Shared with their tokens, which may outlive the loop.
class TerminationHolds final : public std::enable_shared_from_this<TerminationHolds> {
 public:
  explicit TerminationHolds(Block end) : stop(std::move(end)) {}

  std::shared_ptr<Cancelable> add(const std::string& name) EXCLUDES(mutex) {
    MutexLock lock(mutex);
    const auto hold = std::make_shared<Hold>(shared_from_this(), counts[name]);
    ++hold->count;
    ++all;
    return hold;
  }

  // Stops the loop now (true) or, when there are holds, with the last release.
  bool terminate() EXCLUDES(mutex) {
    MutexLock lock(mutex);
    terminating = true;
    if (all == 0 && stop) stop();
    return all == 0;
  }

  // The current holds: "request (3), save".
  std::string description() EXCLUDES(mutex) {
    MutexLock lock(mutex);
    std::string text;
    for (const auto& [name, count] : counts) {
      if (count > 0) text += (text.empty() ? "" : ", ") + name;
      if (count > 1) text += " (" + std::to_string(count) + ")";
    }
    return text;
  }

  // For the end of the loop: later releases find nothing to stop.
  void forgetLoop() EXCLUDES(mutex) {
    MutexLock lock(mutex);
    stop = nullptr;
  }

 private:
  // Every request has one, so it is a single piece of memory. The rest is guarded by the lock.
  struct Hold final : public Cancelable {
    Hold(std::shared_ptr<TerminationHolds> ofLoop, std::size_t& ofName)
        : holds(std::move(ofLoop)), count(ofName) {}
    void cancel() override { holds->release(*this); }

    const std::shared_ptr<TerminationHolds> holds;
    std::size_t& count;
    bool isOver = false;
  };

  void release(Hold& hold) EXCLUDES(mutex) {
    MutexLock lock(mutex);
    if (std::exchange(hold.isOver, true)) return;
    --hold.count;
    // Under the lock, so that the loop is not destroyed meanwhile. stop() takes only the event
    // loop's own lock.
    if (--all == 0 && terminating && stop) stop();
  }

  Mutex mutex;
  Block stop GUARDED_BY(mutex);
  // Names stay, as there are few.
  std::map<std::string, std::size_t> counts GUARDED_BY(mutex);
  std::size_t all GUARDED_BY(mutex) = 0;
  bool terminating GUARDED_BY(mutex) = false;
};

}  // namespace

struct RunLoop::State {
  const FileDescriptor signals = takeOverSignals();
  EventLoop loop;
  const std::shared_ptr<EventLoopScheduler> scheduler = std::make_shared<EventLoopScheduler>(loop);
  const std::shared_ptr<TerminationHolds> holds =
      std::make_shared<TerminationHolds>([this] { loop.stop(); });
  std::multimap<int, std::shared_ptr<const Block>> handlers;
  std::map<int, int> unhandled;  // signals that came before their first handler
  std::shared_ptr<Cancelable> signalWatch;
  std::shared_ptr<Cancelable> graceTimer;

  void readSignals() {
    signalfd_siginfo info{};
    while (::read(signals.get(), &info, sizeof info) == sizeof info) {
      handle(static_cast<int>(info.ssi_signo));
    }
  }

  void handle(int signal) {
    std::vector<std::weak_ptr<const Block>> called;  // a handler may add and cancel handlers
    for (auto [found, end] = handlers.equal_range(signal); found != end; ++found) {
      called.push_back(found->second);
    }
    if (called.empty()) ++unhandled[signal];
    for (const auto& weak : called) {
      if (const auto handler = weak.lock()) (*handler)();
    }
    if (signal != SIGHUP) terminate();
  }

  void terminate() {
    if (holds->terminate() || graceTimer) return;
    graceTimer = scheduler->afterDelay(terminationGraceSeconds, [this] {
      StandardStreams::writeError("quenlet: ending, though still busy with: " +
                                  holds->description());
      loop.stop();
    });
  }

  void remove(const std::shared_ptr<const Block>& handler) {
    std::erase_if(handlers, [&](const auto& entry) { return entry.second == handler; });
  }
};

RunLoop::RunLoop() : state(std::make_unique<State>()) {
  state->signalWatch =
      state->loop.watch(state->signals.get(), EPOLLIN,
                        [running = state.get()](std::uint32_t) { running->readSignals(); });
}

RunLoop::~RunLoop() {
  state->holds->forgetLoop();
  state->signalWatch->cancel();
}

EventLoop& RunLoop::eventLoop() { return state->loop; }

std::shared_ptr<Scheduler> RunLoop::mainThreadScheduler() { return state->scheduler; }

std::shared_ptr<Cancelable> RunLoop::addSignalSource(int signal, Block handler) {
  const auto held = std::make_shared<const Block>(std::move(handler));
  state->handlers.emplace(signal, held);
  for (int missed = std::exchange(state->unhandled[signal], 0); missed > 0; --missed) {
    state->loop.post([weak = std::weak_ptr(held)] {
      if (const auto uncancelled = weak.lock()) (*uncancelled)();
    });
  }
  return std::make_shared<CancelBlock>([owner = state.get(), held] { owner->remove(held); });
}

std::shared_ptr<Cancelable> RunLoop::holdTermination(const std::string& name) {
  return state->holds->add(name);
}

void RunLoop::run() { state->loop.run(); }

void RunLoop::stop() { state->loop.stop(); }

}  // namespace quenlet
