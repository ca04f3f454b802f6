// The writing half of a connection: answers, failures, and the pieces of long replies.
//
// A reply in pieces is encoded as its peer reads it. sendPieces() adds pieces while less than
// `unsentBytesAhead` is unsent; flush(), which every writer calls, posts it again once there is
// room. A peer that stops reading thus holds a few pieces in memory, not a whole reply.

#include <sys/socket.h>

#include <exception>
#include <utility>

#include "platform/ipc/ErrorWire.h"
#include "platform/ipc/PendingReply.h"
#include "platform/ipc/UnixServiceConnection.h"

namespace quenlet {

namespace {

// After these, other connections get their turn on the worker.
constexpr int piecesInTurn = 4;

}  // namespace

bool UnixServiceConnection::isOpen() {
  MutexLock lock(mutex);
  return descriptor.isOpen() && !abandoned;
}

void UnixServiceConnection::fail(std::uint64_t identifier, const ErrorPtr& error) {
  WireEncoder encoder;
  ErrorWire::encode(encoder, error);
  MutexLock lock(mutex);
  enqueue(FrameKind::failure, identifier, std::move(encoder).take());
}

void UnixServiceConnection::answer(const PendingReply& pending, FrameKind kind, std::string body) {
  std::shared_ptr<ProcessTransaction> ended;
  MutexLock lock(mutex);
  countAnswer(pending);
  enqueue(kind, pending.identifier, std::move(body));
  ended = finishAnswer();
}

void UnixServiceConnection::answerInPieces(const PendingReply& pending, EncodedReplyPtr reply) {
  std::shared_ptr<ProcessTransaction> ended;
  MutexLock lock(mutex);
  countAnswer(pending);
  if (mayEnqueue()) output.append(pending.identifier, std::move(reply));
  sendPiecesSoon();
  ended = finishAnswer();
}

void UnixServiceConnection::countAnswer(const PendingReply& pending) {
  --unanswered;
  if (pending.isLong) --unansweredLong;
}

std::shared_ptr<ProcessTransaction> UnixServiceConnection::finishAnswer() {
  // Answers given during the dispatch are written together by finishBatch().
  if (!dispatching || !context->loop->isLoopThread()) {
    flush();
    if (output.hasBytes()) updateWatch();
  }
  continueSoon();
  return endedTransaction();
}

void UnixServiceConnection::enqueue(FrameKind kind, std::uint64_t identifier, std::string body) {
  if (!mayEnqueue()) return;
  output.append(kind, identifier, std::move(body));
  heldOutput.set(output.unsentBytes());
}

// Whether the connection is open and its peer reads its answers; if it does not, abandons it.
bool UnixServiceConnection::mayEnqueue() {
  if (!descriptor.isOpen() || abandoned) return false;
  if (output.unsentBytes() <= limits.unsentBytes) return true;
  // The socket may have room that nobody has tried yet.
  flush();
  if (output.unsentBytes() > limits.unsentBytes) abandon();
  return !abandoned;
}

void UnixServiceConnection::sendPiecesSoon() {
  if (sendingPieces || !output.nextPiece() || output.unsentBytes() >= limits.unsentBytesAhead) {
    return;
  }
  sendingPieces = true;
  Block block = [self = shared_from_this()] { self->sendPieces(); };
  if (context->workers) {
    context->workers->post(std::move(block));
  } else {
    context->loop->post(std::move(block));
  }
}

void UnixServiceConnection::sendPieces() {
  try {
    for (int i = 0; i < piecesInTurn; ++i) {
      const std::optional<ReplyQueue::NextPiece> next = takeNextPiece();
      if (!next) break;
      addPiece(next->reply->piece(next->index));
    }
  } catch (const std::exception&) {
    giveUp();
  }
  MutexLock lock(mutex);
  sendingPieces = false;
  sendPiecesSoon();
}

std::optional<ReplyQueue::NextPiece> UnixServiceConnection::takeNextPiece() {
  MutexLock lock(mutex);
  if (output.unsentBytes() >= limits.unsentBytesAhead) return std::nullopt;
  return output.nextPiece();
}

void UnixServiceConnection::addPiece(std::shared_ptr<const std::string> bytes) {
  std::shared_ptr<ProcessTransaction> ended;
  MutexLock lock(mutex);
  // The lock was free while the piece was encoded; the connection may have ended, and its queue.
  if (!descriptor.isOpen() || abandoned) return;
  output.addPiece(std::move(bytes));
  flush();
  ended = endedTransaction();
  updateWatch();
  continueSoon();
}

void UnixServiceConnection::flush() {
  if (!descriptor.isOpen()) return;
  if (output.hasBytes() && output.writeTo(descriptor.get()) == OutputQueue::Outcome::failed) {
    abandon();
  }
  heldOutput.set(output.unsentBytes());
  // Here, since nobody may flush again once there is nothing left to write.
  sendPiecesSoon();
}

// Only the loop's thread may close the socket. Shutting it down wakes that thread.
void UnixServiceConnection::abandon() {
  abandoned = true;
  output.clear();
  heldOutput.set(0);
  ::shutdown(descriptor.get(), SHUT_RDWR);
}

void UnixServiceConnection::giveUp() {
  MutexLock lock(mutex);
  if (descriptor.isOpen() && !abandoned) abandon();
}

}  // namespace quenlet
