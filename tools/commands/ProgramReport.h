#pragma once

#include <filesystem>
#include <string>

#include "tools/commands/Session.h"

namespace quenlet {

// What "doctor" says of a program: whether the agent serves it, and what to do if not. Asks no
// agent. The exit code is `done` for one that is served.
[[nodiscard]] ExitCode reportProgram(const Session& session, const std::filesystem::path& file,
                                     bool asJSON);

}  // namespace quenlet
