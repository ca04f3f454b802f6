#include "platform/ipc/ReplyQueue.h"

#include <algorithm>
#include <string_view>
#include <utility>

namespace quenlet {

void ReplyQueue::append(FrameKind kind, std::uint64_t identifier, std::string body) {
  if (waiting.empty()) return output.append(kind, identifier, {}, std::move(body));
  waitingBytes += body.size();
  waiting.push_back({kind, identifier, std::move(body), nullptr});
}

void ReplyQueue::append(std::uint64_t identifier, EncodedReplyPtr reply) {
  ++inPieces;
  waiting.push_back({FrameKind::reply, identifier, {}, std::move(reply)});
  if (waiting.size() == 1) begin();
}

// Queues the header of the first answer, unless it takes several messages, each with its own.
void ReplyQueue::begin() {
  const Answer& answer = waiting.front();
  const std::size_t size = answer.reply->sizeInBytes();
  if (size + FrameHeader::countedBytes > maximumSize) return;
  output.appendHeader(FrameKind::reply, answer.identifier, size);
}

std::optional<ReplyQueue::NextPiece> ReplyQueue::nextPiece() const {
  if (waiting.empty()) return std::nullopt;
  return NextPiece{waiting.front().reply, waiting.front().nextPiece};
}

void ReplyQueue::addPiece(std::shared_ptr<const std::string> bytes) {
  Answer& answer = waiting.front();
  ++answer.nextPiece;
  if (answer.reply->sizeInBytes() + FrameHeader::countedBytes > maximumSize) {
    addMessages(answer, bytes);
  } else {
    output.append(std::move(bytes));
  }
  if (answer.nextPiece < answer.reply->pieceCount()) return;
  --inPieces;
  waiting.pop_front();
  // The whole answers behind it are due now, up to the next reply in pieces.
  while (!waiting.empty() && !waiting.front().reply) {
    Answer& next = waiting.front();
    waitingBytes -= next.body.size();
    output.append(next.kind, next.identifier, {}, std::move(next.body));
    waiting.pop_front();
  }
  if (!waiting.empty()) begin();
}

// A piece can be larger than the largest message, and is cut then.
void ReplyQueue::addMessages(const Answer& answer,
                             const std::shared_ptr<const std::string>& bytes) {
  const std::size_t most = maximumSize - FrameHeader::countedBytes;
  const bool isLastPiece = answer.nextPiece == answer.reply->pieceCount();
  std::string_view rest = *bytes;
  do {
    const std::string_view part = rest.substr(0, most);
    rest.remove_prefix(part.size());
    const FrameKind kind = isLastPiece && rest.empty() ? FrameKind::reply : FrameKind::partOfReply;
    if (part.size() < bytes->size()) {
      output.append(kind, answer.identifier, {}, std::string(part));
    } else {
      output.appendHeader(kind, answer.identifier, part.size());
      output.append(bytes);
    }
  } while (!rest.empty());
}

void ReplyQueue::clear() {
  output.clear();
  waiting.clear();
  waitingBytes = 0;
  inPieces = 0;
}

}  // namespace quenlet
