#pragma once

#include <cstdint>
#include <deque>
#include <memory>
#include <optional>
#include <string>

#include "platform/ipc/OutputQueue.h"
#include "platform/ipc/WireReply.h"

namespace quenlet {

// The answers of one connection on their way to its socket, in the order in which they were given.
// A reply in pieces need not be here as a whole: its owner adds one piece at a time, and the
// answers behind it wait for the last one. One thread at a time.
//
//   append() --> waiting: [A in pieces: 3 of 7 added] [B] [C]
//                             | addPiece()              ^ whole answers, behind A's last piece
//                             v
//   append() --> output: header of A, pieces 1, 2, 3 ... --> socket
//   (nothing waits)
//
// A reply in pieces goes out as one message if it is not too large for that, else as several.
class ReplyQueue final {
 public:
  explicit ReplyQueue(std::size_t maximumMessageSize) : maximumSize(maximumMessageSize) {}

  // Queues an answer as one message. The caller checks its size.
  void append(FrameKind kind, std::uint64_t identifier, std::string body);
  void append(std::uint64_t identifier, EncodedReplyPtr reply);

  struct NextPiece final {
    EncodedReplyPtr reply;
    std::size_t index = 0;
  };
  // The piece to add next; nothing when no reply in pieces is waiting.
  [[nodiscard]] std::optional<NextPiece> nextPiece() const;
  void addPiece(std::shared_ptr<const std::string> bytes);
  // How many replies still lack pieces.
  [[nodiscard]] std::size_t repliesInPieces() const { return inPieces; }

  [[nodiscard]] OutputQueue::Outcome writeTo(int socket) { return output.writeTo(socket); }
  void clear();
  // Whether there is something to write now.
  [[nodiscard]] bool hasBytes() const { return !output.empty(); }
  // The bytes in the queue; pieces count once they are added.
  [[nodiscard]] std::size_t unsentBytes() const { return output.unsentBytes() + waitingBytes; }

 private:
  // `reply` is null for a whole answer, which is in `body`.
  struct Answer final {
    FrameKind kind;
    std::uint64_t identifier;
    std::string body;
    EncodedReplyPtr reply;
    std::size_t nextPiece = 0;
  };

  void begin();
  void addMessages(const Answer& answer, const std::shared_ptr<const std::string>& bytes);

  const std::size_t maximumSize;
  OutputQueue output;
  // Unless it is empty, the first one is the reply whose pieces are being added.
  std::deque<Answer> waiting;
  std::size_t waitingBytes = 0;
  std::size_t inPieces = 0;
};

}  // namespace quenlet
