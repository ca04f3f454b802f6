#pragma once

#include <string>

#include "tools/commands/Session.h"

namespace quenlet {

// Whether the owner agrees to what cannot be taken back. With `isConfirmed`, the option --yes, that
// is agreed. Else the question is asked, if standard input and standard error are terminals; only a
// word that begins with "y" agrees. done to go on; refused after a no, usage when nobody can be
// asked, and both have been said.
[[nodiscard]] ExitCode askOwner(const Session& session, bool isConfirmed,
                                const std::string& question);

}  // namespace quenlet
