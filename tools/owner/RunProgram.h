#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "quenlet/Result.h"

namespace quenlet {

// What runs when a file is executed: the program whose path the agent finds in /proc/<pid>/exe. A
// value type.
struct RunProgram final {
  // With links resolved. For a script, that of the program which reads it.
  std::filesystem::path executable;
  // The scripts that lead there, the file itself first; none when the file is a program.
  std::vector<std::filesystem::path> scripts;

  // Follows what the "#!" lines of scripts say, and looks up in PATH what `env` would start. An
  // error when `file` cannot be executed, or when it cannot be said what would run.
  [[nodiscard]] static Result<RunProgram> of(const std::filesystem::path& file);
};

}  // namespace quenlet
