#pragma once

#include <cstdint>
#include <deque>
#include <memory>
#include <string>
#include <string_view>

#include "platform/ipc/FrameHeader.h"

namespace quenlet {

// Messages waiting to be written to a socket, in order. Small ones share a buffer, and many go out
// with one system call. One thread at a time.
class OutputQueue final {
 public:
  enum class Outcome { drained, blocked, failed };

  // Queues one message with the body `bodyStart` + `body`, under 4 GiB together. The caller checks
  // the limit for messages.
  void append(FrameKind kind, std::uint64_t identifier, std::string_view bodyStart,
              std::string body);
  // The same in steps, for a body in pieces: the header, then each piece.
  void appendHeader(FrameKind kind, std::uint64_t identifier, std::size_t bodySize);
  void append(std::shared_ptr<const std::string> piece);
  // Writes as much as the socket takes without blocking. After `failed` (see errno) nothing more
  // can be written to this connection.
  [[nodiscard]] Outcome writeTo(int socket);
  void clear();
  [[nodiscard]] bool empty() const { return unsent == 0; }
  [[nodiscard]] std::size_t unsentBytes() const { return unsent; }

 private:
  // Bytes of this queue's own, to which more can be added, or shared ones.
  struct Chunk final {
    std::string own;
    std::shared_ptr<const std::string> shared;
    [[nodiscard]] const std::string& bytes() const { return shared ? *shared : own; }
  };

  [[nodiscard]] std::string& ownChunk();
  void drop(std::size_t sentBytes);

  std::deque<Chunk> chunks;
  // The bytes of the first chunk that have been written.
  std::size_t sentOfFirst = 0;
  std::size_t unsent = 0;
};

}  // namespace quenlet
