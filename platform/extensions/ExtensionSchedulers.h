#pragma once

#include <memory>

#include "platform/scheduling/EventLoop.h"
#include "platform/scheduling/Scheduler.h"

namespace quenlet {

// Where the work with extensions is done. A value type.
struct ExtensionSchedulers final {
  // Carries the sockets and the ends of the programs.
  EventLoop& loop;
  // Runs its blocks on the thread of `loop`.
  std::shared_ptr<Scheduler> onLoop;
  // For what may take long: the loop's thread has more to do than extensions. One block at a time,
  // so that a donor's re-donations keep their order.
  std::shared_ptr<Scheduler> background;
};

}  // namespace quenlet
