#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <utility>

namespace quenlet {

// The encoded values of a reply that may be too long to be in memory as a whole for each client
// that reads it slowly: they are had in pieces. Immutable, or seems so; thread-safe.
class EncodedReply {
 public:
  virtual ~EncodedReply() = default;
  // Of all pieces together.
  [[nodiscard]] virtual std::size_t sizeInBytes() const = 0;
  [[nodiscard]] virtual std::size_t pieceCount() const = 0;
  // May be encoded anew at each call, always to the same bytes.
  [[nodiscard]] virtual std::shared_ptr<const std::string> piece(std::size_t index) const = 0;
};
using EncodedReplyPtr = std::shared_ptr<const EncodedReply>;

// Where the answer to one request goes. Thread-safe.
class ReplyTarget {
 public:
  virtual ~ReplyTarget() = default;
  virtual void send(std::string encodedValues) = 0;
  virtual void sendInPieces(EncodedReplyPtr reply) = 0;
  [[nodiscard]] virtual bool isWanted() = 0;
};

// The right to answer one request, with its encoded reply values; copies share it. Used once, on
// any thread; when the last copy goes unused, the caller gets the noReply error. After the
// connection ended it does nothing.
class WireReply final {
 public:
  WireReply() = default;
  explicit WireReply(std::shared_ptr<ReplyTarget> replyTarget) : target(std::move(replyTarget)) {}

  void operator()(std::string encodedValues) const { target->send(std::move(encodedValues)); }
  // The pieces are asked for as the client takes them, on a thread of the service's.
  void operator()(EncodedReplyPtr reply) const { target->sendInPieces(std::move(reply)); }
  // Whether somebody is still there to read the answer: before work that only the answer needs.
  [[nodiscard]] bool isWanted() const { return target->isWanted(); }

 private:
  std::shared_ptr<ReplyTarget> target;
};

}  // namespace quenlet
