#pragma once

#include <sys/socket.h>

#ifndef SO_PASSRIGHTS
#define SO_PASSRIGHTS 83
#endif

namespace quenlet {

// Keeps senders from attaching file descriptors to data for this Unix socket, or for one that it
// accepts. Otherwise the kernel closes them in the thread that reads, and closing a lingering
// connection can take as long as its owner likes. False before Linux 6.16, which cannot do this:
// there, use receiveWithoutDescriptors().
inline bool refuseDescriptors(int socket) {
  const int refused = 0;
  return ::setsockopt(socket, SOL_SOCKET, SO_PASSRIGHTS, &refused, sizeof(refused)) == 0;
}

}  // namespace quenlet
