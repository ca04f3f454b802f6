#pragma once

#include <sys/socket.h>

#include <utility>

#include "platform/foundation/FileDescriptor.h"
#include "platform/scheduling/PatientThread.h"

namespace quenlet {

// Closes a connected, non-blocking Unix socket. Unread messages may carry descriptors, which close
// with it, and closing one can block for as long as its sender likes (a connection that lingers).
// So `patient`, if not null, does that.
inline void closeWithoutWaiting(FileDescriptor socket, PatientThread* patient) {
  if (patient == nullptr || !socket.isOpen()) return;
  // From here on nothing more can arrive.
  ::shutdown(socket.get(), SHUT_RD);
  char byte = 0;
  if (::recv(socket.get(), &byte, 1, MSG_DONTWAIT | MSG_PEEK) > 0)
    patient->close(std::move(socket));
}

}  // namespace quenlet
