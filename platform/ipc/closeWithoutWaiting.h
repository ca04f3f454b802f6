#pragma once

#include <sys/socket.h>

#include <utility>

#include "platform/scheduling/FileDescriptor.h"
#include "platform/scheduling/PatientThread.h"

namespace quenlet {

// Closes a connected, non-blocking Unix socket. Descriptors may be attached to what it has not
// read, and go with it, which takes as long as their sender likes; so a thread that may wait does
// that, where there is one.
inline void closeWithoutWaiting(FileDescriptor socket, PatientThread* patient) {
  if (patient == nullptr || !socket.isOpen()) return;
  // From here on nothing is added to what is unread.
  ::shutdown(socket.get(), SHUT_RD);
  char byte = 0;
  if (::recv(socket.get(), &byte, 1, MSG_DONTWAIT | MSG_PEEK) > 0)
    patient->close(std::move(socket));
}

}  // namespace quenlet
