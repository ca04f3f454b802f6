#pragma once

#include <cstddef>

namespace quenlet {

// What extensions are granted. A value type; tests lower it.
struct ExtensionLimits final {
  // Without an answer, while something is asked.
  double answerSeconds = 10.0;
  // Of one run, from the start of the program; time in line before that does not count.
  double runSeconds = 120.0;
  // With nothing to do, until the program is ended.
  double idleSeconds = 1.0;
  // From the end of the socket until the program is killed.
  double endSeconds = 2.0;
  // Programs that exist at once; the others wait in line.
  std::size_t programs = 4;
  // Sent to one program and not answered yet; the others wait in order.
  std::size_t unansweredRequests = 16;
  // The soft limit of the open files of a program; 0 for the agent's.
  std::size_t openFiles = 0;
};

}  // namespace quenlet
