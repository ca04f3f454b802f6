#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <utility>

namespace quenlet {

// The encoded values of a long reply, in pieces: a client that reads slowly must not keep all of it
// in memory. Behaves as immutable; thread-safe.
class EncodedReply {
 public:
  virtual ~EncodedReply() = default;
  // The size of all pieces together.
  [[nodiscard]] virtual std::size_t sizeInBytes() const = 0;
  [[nodiscard]] virtual std::size_t pieceCount() const = 0;
  // May encode the piece again at each call, always to the same bytes.
  [[nodiscard]] virtual std::shared_ptr<const std::string> piece(std::size_t index) const = 0;
};
using EncodedReplyPtr = std::shared_ptr<const EncodedReply>;

// The destination of the answer to one request. Thread-safe.
class ReplyTarget {
 public:
  virtual ~ReplyTarget() = default;
  virtual void send(std::string encodedValues) = 0;
  virtual void sendInPieces(EncodedReplyPtr reply) = 0;
  [[nodiscard]] virtual bool isWanted() = 0;
};

// Answers one request with its encoded reply values; copies share the right to. Call it once, on
// any thread. If the last copy is destroyed uncalled, the client gets the noReply error. After the
// connection has ended it does nothing.
class WireReply final {
 public:
  WireReply() = default;
  explicit WireReply(std::shared_ptr<ReplyTarget> replyTarget) : target(std::move(replyTarget)) {}

  void operator()(std::string encodedValues) const { target->send(std::move(encodedValues)); }
  // The pieces are fetched as the client reads them, on a thread of the service's.
  void operator()(EncodedReplyPtr reply) const { target->sendInPieces(std::move(reply)); }
  // Whether the client is still connected. Ask before work that only serves the answer.
  [[nodiscard]] bool isWanted() const { return target->isWanted(); }

 private:
  std::shared_ptr<ReplyTarget> target;
};

}  // namespace quenlet
