#pragma once

#include <sys/socket.h>

#ifndef SO_PASSRIGHTS
#define SO_PASSRIGHTS 83
#endif

namespace quenlet {

// Lets nobody attach file descriptors to what they send to this Unix socket, or to one that it
// accepts. The kernel would drop ours unread, but in the thread that reads: the end of a lingering
// connection can hold that up for as long as its owner likes. Answers whether the kernel can do
// that; before Linux 6.16 it cannot, and receiveWithoutDescriptors() is there for that.
inline bool refuseDescriptors(int socket) {
  const int refused = 0;
  return ::setsockopt(socket, SOL_SOCKET, SO_PASSRIGHTS, &refused, sizeof(refused)) == 0;
}

}  // namespace quenlet
