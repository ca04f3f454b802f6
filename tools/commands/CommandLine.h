#pragma once

#include <string>
#include <vector>

#include "tools/commands/Session.h"
#include "tools/help/HelpPage.h"

namespace quenlet {

// Parses the program's arguments and runs the chosen action. One thread.
class CommandLine final {
 public:
  CommandLine() = delete;

  // `arguments` come without the program's name. Wrong usage, and a failure to write the result,
  // are reported on the error stream.
  [[nodiscard]] static ExitCode run(std::vector<std::string> arguments, Session& session);
  // All that "--help" tells, of all words.
  [[nodiscard]] static HelpPage help();
};

}  // namespace quenlet
