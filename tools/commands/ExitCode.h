#pragma once

namespace quenlet {

// The program's exit status.
enum class ExitCode : int {
  done = 0,
  refused = 1,  // the agent said no, or a file could not be read or written
  usage = 2,
  noAgent = 3,
};

}  // namespace quenlet
