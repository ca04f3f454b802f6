#pragma once

#include "platform/foundation/FileDescriptor.h"
#include "quenlet/Extension.h"

namespace quenlet {

// runExtension() over any connected stream socket. Returns when the other side closes it or sends a
// malformed message. Throws std::system_error when the system is out of descriptors.
void serveExtension(Extension& extension, FileDescriptor socket);

}  // namespace quenlet
