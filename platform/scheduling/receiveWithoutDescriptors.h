#pragma once

#include <sys/socket.h>

#include <cerrno>
#include <cstddef>
#include <span>

namespace quenlet {

// Receives from a Unix socket like recv(), without waiting, unless file descriptors are attached to
// what has come and has room: then nothing is taken, and the result is -1 with errno EBADMSG. The
// kernel drops descriptors that nobody asked for, but in the thread that takes the message, which
// the end of a lingering connection can hold up for as long as its owner likes. Costs a second look
// at each message; needed only where refuseDescriptors() has no effect.
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
  // No more than was seen: what has come since may be another matter.
  return ::recv(socket, room.data(), static_cast<std::size_t>(seen), MSG_DONTWAIT);
}

}  // namespace quenlet
