#pragma once

#include <sys/socket.h>

#include <cerrno>
#include <cstddef>
#include <span>

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

// Like recv() on a Unix socket, without waiting. But when file descriptors are attached to the data
// that would be read, takes nothing and fails with EBADMSG. The kernel would close such descriptors
// in the thread that reads, and closing a lingering connection can take as long as its owner likes.
// Costs a second system call per message; needed only where refuseDescriptors() has no effect.
[[nodiscard]] inline ssize_t receiveWithoutDescriptors(int socket, std::span<char> room) {
  iovec part{room.data(), room.size()};
  msghdr message{};
  message.msg_iov = &part;
  message.msg_iovlen = 1;
  const ssize_t seen = ::recvmsg(socket, &message, MSG_DONTWAIT | MSG_PEEK);
  if (seen < 0) return seen;
  if ((message.msg_flags & MSG_CTRUNC) != 0) {
    errno = EBADMSG;
    return -1;
  }
  // No more than was seen: data that has come since may carry descriptors.
  return ::recv(socket, room.data(), static_cast<std::size_t>(seen), MSG_DONTWAIT);
}

}  // namespace quenlet
