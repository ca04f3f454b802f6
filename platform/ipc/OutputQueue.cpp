#include "platform/ipc/OutputQueue.h"

#include <sys/socket.h>
#include <sys/uio.h>

#include <array>
#include <cerrno>
#include <utility>

namespace quenlet {

namespace {

constexpr std::size_t sharedChunkSize = std::size_t{16} << 10;

}  // namespace

void OutputQueue::append(FrameKind kind, std::uint64_t identifier, std::string_view bodyStart,
                         std::string body) {
  const std::size_t bodySize = bodyStart.size() + body.size();
  const auto header = FrameHeader::make(kind, identifier, bodySize).encode();
  if (chunks.empty() || chunks.back().size() >= sharedChunkSize) chunks.emplace_back();
  chunks.back().append(header.data(), header.size()).append(bodyStart);
  if (chunks.back().size() + body.size() <= sharedChunkSize) {
    chunks.back().append(body);
  } else {
    chunks.push_back(std::move(body));
  }
  unsent += header.size() + bodySize;
}

OutputQueue::Outcome OutputQueue::writeTo(int socket) {
  while (unsent > 0) {
    std::array<iovec, 32> parts;
    std::size_t count = 0;
    std::size_t skipped = sentOfFirst;
    for (std::string& chunk : chunks) {
      if (count == parts.size()) break;
      parts[count++] = {chunk.data() + skipped, chunk.size() - skipped};
      skipped = 0;
    }
    msghdr message{};
    message.msg_iov = parts.data();
    message.msg_iovlen = count;
    const ssize_t sent = ::sendmsg(socket, &message, MSG_DONTWAIT | MSG_NOSIGNAL);
    if (sent >= 0) {
      drop(static_cast<std::size_t>(sent));
    } else if (errno == EAGAIN || errno == EWOULDBLOCK) {
      return Outcome::blocked;
    } else if (errno != EINTR) {
      return Outcome::failed;
    }
  }
  return Outcome::drained;
}

void OutputQueue::drop(std::size_t sentBytes) {
  unsent -= sentBytes;
  sentOfFirst += sentBytes;
  while (!chunks.empty() && sentOfFirst >= chunks.front().size()) {
    sentOfFirst -= chunks.front().size();
    chunks.pop_front();
  }
}

void OutputQueue::clear() {
  chunks.clear();
  sentOfFirst = 0;
  unsent = 0;
}

}  // namespace quenlet
