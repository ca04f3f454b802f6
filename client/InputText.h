#pragma once

#include <cstddef>
#include <string>

#include "quenlet/Result.h"

namespace quenlet {

// The bytes of the file at `path`, or of the standard input for "-", of any type: waits for the
// writer of a pipe. Stops after somewhat more than `mostBytes`, so that the caller sees that there
// are more.
[[nodiscard]] Result<std::string> readInput(const std::string& path, std::size_t mostBytes);

}  // namespace quenlet
