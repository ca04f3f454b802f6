#pragma once

#include "client/ExtensionDonor.h"
#include "platform/scheduling/FileDescriptor.h"

namespace quenlet {

// All that a donor extension's main() has to do: takes the agent's socket from the standard input,
// which reads as empty from then on, and answers requests until the agent closes it. Returns the
// exit status: 0, or 2 with a line on standard error when the agent did not start the program. See
// docs/extensions.md.
[[nodiscard]] int runDonorExtension(ExtensionDonor& donor);

// The same over any connected stream socket. Returns when the other side closes it or sends a
// malformed message. Throws std::system_error when the system is out of descriptors.
void serveDonor(ExtensionDonor& donor, FileDescriptor socket);

}  // namespace quenlet
