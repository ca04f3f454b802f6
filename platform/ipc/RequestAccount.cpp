#include "platform/ipc/RequestAccount.h"

#include <utility>

namespace quenlet {

bool RequestAccount::beginTurn(std::shared_ptr<ProcessTransaction>& begun) {
  paused = continuing = false;
  if (!output.isOpen()) return false;
  inTurn = true;
  takenInTurn = 0;
  if (!transaction) transaction.swap(begun);
  return true;
}

bool RequestAccount::mayTake(bool withLongReplies) {
  if (!output.isOpen()) return false;
  nextIsLong = withLongReplies;
  paused = mustWait() || takenInTurn >= context.limits.requestsInTurn ||
           context.admission->isSuspended();
  ++takenInTurn;
  return !paused;
}

void RequestAccount::noneLeft() {
  nextIsLong = false;
  paused = mustWait() || context.admission->isSuspended();
}

// Whether the peer must read answers first, or its large request must be performed.
bool RequestAccount::mustWait() const {
  const ServiceLimits& limits = context.limits;
  return largeOpen || unanswered >= limits.unansweredRequests ||
         output.unsentBytes() >= limits.unsentBytesAhead ||
         (nextIsLong && unansweredLong + output.repliesInPieces() >= limits.longReplies);
}

bool RequestAccount::claimContinuation() {
  if (!paused || inTurn || continuing || mustWait() || !output.isOpen()) return false;
  continuing = !context.admission->isSuspended();
  return continuing;
}

std::shared_ptr<ProcessTransaction> RequestAccount::takeEndedTransaction() {
  const bool isAnswering = output.unsentBytes() > 0 || output.repliesInPieces() > 0;
  const bool isPending = inTurn || largeOpen || unanswered > 0 || isAnswering;
  return isPending && output.isOpen() ? nullptr : std::exchange(transaction, nullptr);
}

}  // namespace quenlet
