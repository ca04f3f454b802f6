#pragma once

#include <memory>

#include "platform/scheduling/EventLoop.h"
#include "platform/scheduling/Scheduler.h"

namespace quenlet {

// The threads on which extensions are served. A value type.
struct ExtensionSchedulers final {
  // Watches the sockets and the ends of the programs.
  EventLoop& loop;
  // Runs its blocks on the thread of `loop`.
  std::shared_ptr<Scheduler> onLoop;
  // Serial, for work that would hold up the loop's thread, which serves more than extensions. Being
  // serial, it keeps a donor's re-donations in order.
  std::shared_ptr<Scheduler> background;
};

}  // namespace quenlet
