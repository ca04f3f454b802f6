#include "platform/ipc/OutputQueue.h"

#include <sys/socket.h>
#include <sys/uio.h>

#include <array>
#include <cerrno>
#include <utility>

namespace quenlet {

namespace {

// A body that does not fit into a chunk of this size is queued without a copy.
constexpr std::size_t sharedChunkSize = std::size_t{16} << 10;

}  // namespace

void OutputQueue::append(FrameKind kind, std::uint64_t identifier, std::string_view bodyStart,
                         std::string body) {
  const std::size_t bodySize = bodyStart.size() + body.size();
  appendHeader(kind, identifier, bodySize);
  std::string& chunk = chunks.back().own.append(bodyStart);
  if (chunk.size() + body.size() <= sharedChunkSize) {
    chunk.append(body);
  } else {
    chunks.push_back({std::move(body), nullptr});
  }
  unsent += bodySize;
}

void OutputQueue::appendHeader(FrameKind kind, std::uint64_t identifier, std::size_t bodySize) {
  const auto header = FrameHeader::make(kind, identifier, bodySize).encode();
  ownChunk().append(header.data(), header.size());
  unsent += header.size();
}

void OutputQueue::append(std::shared_ptr<const std::string> piece) {
  unsent += piece->size();
  chunks.push_back({{}, std::move(piece)});
}

std::string& OutputQueue::ownChunk() {
  if (chunks.empty() || chunks.back().shared || chunks.back().own.size() >= sharedChunkSize) {
    chunks.emplace_back();
  }
  return chunks.back().own;
}

OutputQueue::Outcome OutputQueue::writeTo(int socket) {
  while (unsent > 0) {
    std::array<iovec, 32> parts;
    std::size_t count = 0;
    std::size_t skipped = sentOfFirst;
    for (const Chunk& chunk : chunks) {
      if (count == parts.size()) break;
      const std::string& bytes = chunk.bytes();
      // The system only reads them.
      parts[count++] = {const_cast<char*>(bytes.data()) + skipped, bytes.size() - skipped};
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
  while (!chunks.empty() && sentOfFirst >= chunks.front().bytes().size()) {
    sentOfFirst -= chunks.front().bytes().size();
    chunks.pop_front();
  }
}

void OutputQueue::clear() {
  chunks.clear();
  sentOfFirst = 0;
  unsent = 0;
}

}  // namespace quenlet
