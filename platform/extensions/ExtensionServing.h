#pragma once

#include <cstddef>
#include <memory>

#include "platform/scheduling/EventLoop.h"
#include "platform/scheduling/Scheduler.h"

namespace quenlet {

// Limits for donor extensions. A value type; tests lower it.
struct ExtensionLimits final {
  // The longest time without an answer while requests are pending.
  double answerSeconds = 10.0;
  // The longest run, from the start of the program; the time in line before that does not count.
  double runSeconds = 120.0;
  // The time without requests after which the program is ended.
  double idleSeconds = 1.0;
  // The time from the closing of the socket until the program is killed.
  double endSeconds = 2.0;
  // Programs that may exist at once; the others wait in line.
  std::size_t programs = 4;
  // Requests that may be sent to one program ahead of its answers; the others wait in order.
  std::size_t unansweredRequests = 16;
  // The program's soft limit of open files; 0 to inherit the agent's.
  std::size_t openFiles = 0;
};

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
