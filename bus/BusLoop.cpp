#include "bus/BusLoop.h"

#include <sys/epoll.h>

#include <cerrno>
#include <csignal>
#include <ctime>
#include <system_error>
#include <utility>

#include "platform/scheduling/TimerQueue.h"
#include "platform/scheduling/runGuarded.h"

namespace quenlet {
namespace {

void check(int result, const char* action) {
  if (result < 0) throw std::system_error(-result, std::generic_category(), action);
}

}  // namespace

// One thing that the loop waits for. Kept by the loop until it is cancelled or, for what comes
// once, has come.
class BusLoop::Source final : public Cancelable, public std::enable_shared_from_this<Source> {
 public:
  Source(BusLoop& owner, Block called, bool once)
      : loop(&owner), handler(std::move(called)), isOnce(once) {}

  void cancel() override {
    sd_event_source_disable_unref(std::exchange(source, nullptr));
    handler = nullptr;
    // The last step: it can be the last reference.
    if (loop != nullptr) std::exchange(loop, nullptr)->sources.erase(shared_from_this());
  }
  void fire() {
    const auto kept = shared_from_this();
    const Block called = handler;
    if (isOnce) cancel();
    if (called) runGuarded(called);
  }
  void leaveLoop() {
    loop = nullptr;
    cancel();
  }

  sd_event_source* source = nullptr;

 private:
  BusLoop* loop;
  Block handler;
  const bool isOnce;
};

namespace {

// The library's callbacks; `source` is a BusLoop::Source.
template <typename Source>
int fireForDescriptor(sd_event_source*, int, std::uint32_t, void* source) {
  static_cast<Source*>(source)->fire();
  return 0;
}

template <typename Source>
int fireForTime(sd_event_source*, std::uint64_t, void* source) {
  static_cast<Source*>(source)->fire();
  return 0;
}

template <typename Source>
int fireForSignal(sd_event_source*, const signalfd_siginfo*, void* source) {
  static_cast<Source*>(source)->fire();
  return 0;
}

}  // namespace

BusLoop::BusLoop() { check(sd_event_new(&event), "create an event loop"); }

BusLoop::~BusLoop() {
  for (const auto& source : std::exchange(sources, {})) source->leaveLoop();
  sd_event_unref(event);
}

std::shared_ptr<BusLoop::Source> BusLoop::add(Block handler, bool isOnce) {
  auto source = std::make_shared<Source>(*this, std::move(handler), isOnce);
  sources.insert(source);
  return source;
}

std::shared_ptr<Cancelable> BusLoop::watch(int descriptor, Block handler, Turn turn) {
  const auto added = add(std::move(handler), false);
  check(sd_event_add_io(event, &added->source, descriptor, EPOLLIN, fireForDescriptor<Source>,
                        added.get()),
        "watch a descriptor");
  if (turn == Turn::afterMessages) {
    constexpr std::int64_t later = SD_EVENT_PRIORITY_NORMAL + 1;
    check(sd_event_source_set_priority(added->source, later), "order a descriptor");
  }
  return added;
}

std::shared_ptr<Cancelable> BusLoop::after(double delaySeconds, Block block) {
  constexpr std::uint64_t accuracyInMicroseconds = 1000;
  const auto added = add(std::move(block), true);
  const auto delay =
      std::chrono::ceil<std::chrono::microseconds>(TimerQueue::duration(delaySeconds));
  check(sd_event_add_time_relative(event, &added->source, CLOCK_MONOTONIC,
                                   static_cast<std::uint64_t>(delay.count()),
                                   accuracyInMicroseconds, fireForTime<Source>, added.get()),
        "set a timer");
  return added;
}

std::shared_ptr<Cancelable> BusLoop::onSignal(int signal, Block handler) {
  sigset_t blocked;
  sigemptyset(&blocked);
  sigaddset(&blocked, signal);
  check(-pthread_sigmask(SIG_BLOCK, &blocked, nullptr), "block a signal");
  const auto added = add(std::move(handler), false);
  check(sd_event_add_signal(event, &added->source, signal, fireForSignal<Source>, added.get()),
        "wait for a signal");
  return added;
}

ErrorPtr BusLoop::run() {
  const int result = sd_event_loop(event);
  if (result < 0) return makePosixError(-result, "run the event loop");
  return result == 0 ? nullptr : makePosixError(ECONNRESET, "stay on the bus");
}

void BusLoop::stop() { sd_event_exit(event, 0); }

}  // namespace quenlet
