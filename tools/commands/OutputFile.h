#pragma once

#include <string>
#include <string_view>

#include "tools/commands/Session.h"

namespace quenlet {

// Writes `data` to a file that the command line names, with mode 0600. Replaces an existing
// file only with `replaces`; otherwise reports it and suggests --force.
[[nodiscard]] ExitCode writeOutputFile(const Session& session, const std::string& file,
                                       std::string_view data, bool replaces);

}  // namespace quenlet
