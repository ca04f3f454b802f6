#pragma once

#include <cstdint>
#include <deque>
#include <memory>
#include <string>
#include <string_view>

#include "platform/ipc/FrameHeader.h"

namespace quenlet {

// Messages that wait for a socket to take them, in order. Small ones share a buffer, so that many
// go out with one system call. One thread at a time.
class OutputQueue final {
 public:
  enum class Outcome { drained, blocked, failed };

  // Queues one message, its body being `bodyStart` and then `body`. The two are under 4 GiB
  // together; the limit for messages is the caller's to enforce.
  void append(FrameKind kind, std::uint64_t identifier, std::string_view bodyStart,
              std::string body);
  // The same in two steps, for a body that is had in pieces.
  void appendHeader(FrameKind kind, std::uint64_t identifier, std::size_t bodySize);
  void append(std::shared_ptr<const std::string> piece);
  // Hands the socket as much as it takes without waiting. After `failed` (errno says why) the
  // connection is of no more use for writing.
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
  // Of the first chunk, how much has gone out.
  std::size_t sentOfFirst = 0;
  std::size_t unsent = 0;
};

}  // namespace quenlet
