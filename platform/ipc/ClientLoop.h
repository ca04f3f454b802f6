#pragma once

#include "platform/scheduling/EventLoop.h"
#include "platform/scheduling/EventLoopScheduler.h"

namespace quenlet {

// Where the completions of a client's requests run, and what rings when their time is up. Throws
// std::system_error when the system has no descriptor left.
struct ClientLoop final {
  EventLoop events;
  EventLoopScheduler timers{events};
};

}  // namespace quenlet
