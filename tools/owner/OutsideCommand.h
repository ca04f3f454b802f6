#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <vector>

namespace quenlet {

// Runs a program of the system's, looked up in PATH, and gives what it wrote to its standard output
// before it ended, without the last line end; its exit status does not matter. Nothing when there
// is no such program, or it did not end within `limit` or wrote more than 64 KiB: then it is ended.
// What it writes to its standard error is dropped.
[[nodiscard]] std::optional<std::string> outputOf(
    std::vector<std::string> command,
    std::chrono::milliseconds limit = std::chrono::milliseconds(1500));

}  // namespace quenlet
