#include "platform/ipc/ReplyWriter.h"

#include <sys/socket.h>

#include <utility>

namespace quenlet {

FileDescriptor ReplyWriter::close() {
  queue.clear();
  held.set(0);
  return std::move(descriptor);
}

void ReplyWriter::abandon() {
  if (!isOpen()) return;
  abandoned = true;
  queue.clear();
  held.set(0);
  ::shutdown(descriptor.get(), SHUT_RDWR);
}

void ReplyWriter::append(FrameKind kind, std::uint64_t identifier, std::string body) {
  if (!mayAppend()) return;
  queue.append(kind, identifier, std::move(body));
  held.set(unsentBytes());
}

void ReplyWriter::append(std::uint64_t identifier, EncodedReplyPtr reply) {
  if (mayAppend()) queue.append(identifier, std::move(reply));
}

// Abandons the peer if it does not read its answers.
bool ReplyWriter::mayAppend() {
  // The socket may have room that nobody has tried yet.
  if (unsentBytes() > limits.unsentBytes) flush();
  if (unsentBytes() > limits.unsentBytes) abandon();
  return isOpen();
}

void ReplyWriter::flush() {
  if (hasBytes() && queue.writeTo(descriptor.get()) == OutputQueue::Outcome::failed) abandon();
  held.set(unsentBytes());
}

bool ReplyWriter::claimPieces() {
  if (addingPieces || !nextPiece()) return false;
  addingPieces = true;
  return true;
}

std::optional<ReplyQueue::NextPiece> ReplyWriter::nextPiece() const {
  if (unsentBytes() >= limits.unsentBytesAhead) return std::nullopt;
  return queue.nextPiece();
}

void ReplyWriter::addPiece(std::shared_ptr<const std::string> bytes) {
  // The connection may have ended while the piece was encoded, and the queue with it.
  if (isOpen()) queue.addPiece(std::move(bytes));
}

}  // namespace quenlet
