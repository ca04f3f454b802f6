#pragma once

#include <cstdint>
#include <deque>
#include <memory>
#include <optional>
#include <string>

#include "platform/ipc/OutputQueue.h"
#include "platform/ipc/WireReply.h"

namespace quenlet {

// The answers of one connection, in the order in which they were given, on their way to its socket.
// Of a reply in pieces only those are here that its owner has added, one at a time; what was
// appended after it waits for its last one. It is one message when that is allowed to be as large,
// else several. One thread at a time.
class ReplyQueue final {
 public:
  explicit ReplyQueue(std::size_t maximumMessageSize) : maximumSize(maximumMessageSize) {}

  // The answer as one message. Its size is the caller's to check.
  void append(FrameKind kind, std::uint64_t identifier, std::string body);
  void append(std::uint64_t identifier, EncodedReplyPtr reply);

  struct NextPiece final {
    EncodedReplyPtr reply;
    std::size_t index = 0;
  };
  // What to add next; nothing when no reply in pieces has begun, or when all are whole.
  [[nodiscard]] std::optional<NextPiece> nextPiece() const;
  void addPiece(std::shared_ptr<const std::string> bytes);
  // How many replies in pieces lack some.
  [[nodiscard]] std::size_t repliesInPieces() const { return inPieces; }

  [[nodiscard]] OutputQueue::Outcome writeTo(int socket) { return output.writeTo(socket); }
  void clear();
  // Whether the socket could be given some now.
  [[nodiscard]] bool hasBytes() const { return !output.empty(); }
  // Of all that was appended, except for pieces that were not added.
  [[nodiscard]] std::size_t unsentBytes() const { return output.unsentBytes() + waitingBytes; }

 private:
  // `reply` is null when the answer is `body`.
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
  // The first one is a reply in pieces that has begun.
  std::deque<Answer> waiting;
  std::size_t waitingBytes = 0;
  std::size_t inPieces = 0;
};

}  // namespace quenlet
