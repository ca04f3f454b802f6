#include "platform/ipc/PendingReply.h"

#include <exception>

#include "platform/ipc/ErrorWire.h"

namespace quenlet {

namespace {

// A reply that is larger than a message and already in memory.
class WholeReply final : public EncodedReply {
 public:
  explicit WholeReply(std::string encodedValues)
      : bytes(std::make_shared<const std::string>(std::move(encodedValues))) {}
  [[nodiscard]] std::size_t sizeInBytes() const override { return bytes->size(); }
  [[nodiscard]] std::size_t pieceCount() const override { return 1; }
  [[nodiscard]] std::shared_ptr<const std::string> piece(std::size_t) const override {
    return bytes;
  }

 private:
  const std::shared_ptr<const std::string> bytes;
};

std::string encoded(const ErrorPtr& error) {
  WireEncoder encoder;
  ErrorWire::encode(encoder, error);
  return std::move(encoder).take();
}

}  // namespace

UnixServiceConnection::PendingReply::~PendingReply() {
  // A handler that forgot the reply must not leave the client waiting for its time limit.
  try {
    if (!used) {
      fail(
          makeServiceError(ServiceErrorCode::noReply, "the request was dropped without an answer"));
    }
  } catch (const std::exception&) {
    connection->giveUp();
  }
}

void UnixServiceConnection::PendingReply::fail(const ErrorPtr& error) {
  if (used.exchange(true)) return;
  connection->answer(*this, FrameKind::failure, encoded(error));
}

void UnixServiceConnection::PendingReply::send(std::string encodedValues) {
  if (encodedValues.size() + FrameHeader::countedBytes > connection->limits.messageSizeInBytes) {
    return sendInPieces(std::make_shared<const WholeReply>(std::move(encodedValues)));
  }
  if (used.exchange(true)) return;
  connection->answer(*this, FrameKind::reply, std::move(encodedValues));
}

void UnixServiceConnection::PendingReply::sendInPieces(EncodedReplyPtr reply) {
  const ServiceLimits& limits = connection->limits;
  if (!limits.repliesInParts &&
      reply->sizeInBytes() + FrameHeader::countedBytes > limits.messageSizeInBytes) {
    return fail(makeServiceError(ServiceErrorCode::messageTooLarge,
                                 "the reply is larger than a message may be"));
  }
  if (used.exchange(true)) return;
  connection->answerInPieces(*this, std::move(reply));
}

}  // namespace quenlet
