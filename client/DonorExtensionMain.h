#pragma once

#include "client/ExtensionDonor.h"
#include "platform/scheduling/FileDescriptor.h"

namespace quenlet {

// The whole of a donor extension's main(): answers the agent, whose socket is the standard input,
// until the agent closes it; meanwhile the standard input is empty. Returns the exit status: 0, or
// 2 with a line on standard error when the program was not started by the agent. See
// docs/extensions.md.
[[nodiscard]] int runDonorExtension(ExtensionDonor& donor);

// The same over any connected stream socket; returns when the other side closes it, or sends what
// makes no sense. Throws std::system_error when the system has no descriptor left.
void serveDonor(ExtensionDonor& donor, FileDescriptor socket);

}  // namespace quenlet
