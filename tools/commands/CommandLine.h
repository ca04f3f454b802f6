#pragma once

#include <string>
#include <vector>

#include "tools/commands/Session.h"

namespace quenlet {

// The program's words: reads them, does what they say. One thread.
class CommandLine final {
 public:
  CommandLine() = delete;

  // `arguments` without the program's name. Wrong usage is told on the error stream, and so is a
  // result that could not be written.
  [[nodiscard]] static ExitCode run(std::vector<std::string> arguments, Session& session);
};

}  // namespace quenlet
