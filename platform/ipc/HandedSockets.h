#pragma once

#include <vector>

#include "platform/foundation/FileDescriptor.h"
#include "platform/ipc/ServiceAddress.h"

namespace quenlet {

// The sockets that a service manager opened before it started this process, so that clients find
// somebody listening meanwhile. The environment tells of them: LISTEN_FDS is how many there are,
// from descriptor 3 on, and LISTEN_PID the process that they are for. Movable. One thread at a
// time.
class HandedSockets final {
 public:
  // Holds none.
  HandedSockets() = default;
  // Also removes the variables from the environment, and closes the descriptors on exec: what this
  // process starts is not to take them for its own. Call it once, before other threads exist.
  [[nodiscard]] static HandedSockets fromEnvironment();

  // The one that listens at `address`; not open if none does. Closes all others, and says on
  // standard error why they are useless. The file of the socket belongs to the service manager.
  [[nodiscard]] FileDescriptor takeListening(const ServiceAddress& address);

 private:
  std::vector<FileDescriptor> descriptors;
};

}  // namespace quenlet
