#pragma once

#include <string>

#include "platform/foundation/FileDescriptor.h"
#include "platform/ipc/TimeLimit.h"
#include "quenlet/Result.h"

namespace quenlet {

// A blocking stream socket that is connected to a named service of the same user, or of root. The
// noService error when nobody listens, timedOut when the service does not accept by the deadline.
[[nodiscard]] Result<FileDescriptor> connectToService(const std::string& serviceName,
                                                      const TimeLimit& limit);

}  // namespace quenlet
