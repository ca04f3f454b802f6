#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <vector>

namespace quenlet {

// How a program of the system's ended. A value type.
struct CommandEnd final {
  std::string output;  // what it wrote to its standard output, without the last line end
  int status = 0;      // its exit status, or minus the signal that ended it
};

// Runs a program of the system's, looked up in PATH, from the root directory and without a shell.
// Nothing when there is no such program, or it did not end within `limit` or wrote more than
// 64 KiB: then it is ended. What it writes to its standard error is dropped.
[[nodiscard]] std::optional<CommandEnd> endOf(std::vector<std::string> command,
                                              std::chrono::milliseconds limit);
// The same for a program whose exit status does not matter.
[[nodiscard]] std::optional<std::string> outputOf(
    std::vector<std::string> command,
    std::chrono::milliseconds limit = std::chrono::milliseconds(1500));

}  // namespace quenlet
