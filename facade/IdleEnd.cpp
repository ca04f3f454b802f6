#include "facade/IdleEnd.h"

#include <utility>

namespace quenlet {

struct IdleEnd::State final {
  State(BusLoop& runs, double seconds, Block called)
      : loop(runs), idleSeconds(seconds), onIdle(std::move(called)) {}

  void wait() {
    if (!hasEnded) timer = loop.after(idleSeconds, onIdle);
  }
  void take() {
    if (timer) std::exchange(timer, nullptr)->cancel();
    ++holds;
  }
  void release() {
    if (--holds == 0) wait();
  }

  BusLoop& loop;
  const double idleSeconds;
  const Block onIdle;
  std::shared_ptr<Cancelable> timer;
  std::size_t holds = 0;
  bool hasEnded = false;
};

IdleEnd::IdleEnd(BusLoop& loop, double idleSeconds, Block onIdle)
    : state(std::make_shared<State>(loop, idleSeconds, std::move(onIdle))) {
  state->wait();
}

IdleEnd::~IdleEnd() {
  state->hasEnded = true;
  if (state->timer) state->timer->cancel();
}

IdleEnd::Hold IdleEnd::hold() {
  state->take();
  return {nullptr, [held = state](void*) { held->release(); }};
}

bool IdleEnd::isHeld() const { return state->holds > 0; }

}  // namespace quenlet
