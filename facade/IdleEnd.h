#pragma once

#include <functional>
#include <memory>

#include "bus/BusLoop.h"

namespace quenlet {

// Tells when a program has had nothing to do for a while. Use on the loop's thread.
class IdleEnd final {
 public:
  // As long as one is held, there is something to do. May outlive the IdleEnd.
  using Hold = std::shared_ptr<void>;

  // `onIdle` is called after each time of `idleSeconds` without a hold, the first from now on.
  IdleEnd(BusLoop& loop, double idleSeconds, Block onIdle);
  ~IdleEnd();
  IdleEnd(const IdleEnd&) = delete;
  IdleEnd& operator=(const IdleEnd&) = delete;

  [[nodiscard]] Hold hold();
  [[nodiscard]] bool isHeld() const;

 private:
  struct State;
  const std::shared_ptr<State> state;
};

}  // namespace quenlet
