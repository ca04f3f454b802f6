#pragma once

#include <string>
#include <string_view>

#include "tools/commands/Session.h"

namespace quenlet {

// Writes `data` to a file that the command line names, with mode 0600. Only with `replaces` does it
// take the place of one that is there; else it says so, and that --force would.
[[nodiscard]] ExitCode writeOutputFile(const Session& session, const std::string& file,
                                       std::string_view data, bool replaces);

}  // namespace quenlet
