#pragma once

#include <cstddef>
#include <memory>

#include "platform/ipc/ReplyWriter.h"
#include "platform/ipc/ServiceContext.h"

namespace quenlet {

// Keeps account of one connection's requests, from their arrival until their answers are written,
// and decides from it whether to take the next one. That is the back-pressure: the peer is not read
// while too many requests are unanswered, too many bytes unsent, or a large request is open. One
// thread at a time.
//
//   beginTurn() -> mayTake() ... -> endTurn()      on the loop's thread
//        ^             | no: paused
//        '--- claimContinuation()                  by a caller that frees room, on any thread
class RequestAccount final {
 public:
  // Both outlive the account.
  RequestAccount(const ServiceContext& serviceContext, const ReplyWriter& replyWriter)
      : context(serviceContext), output(replyWriter) {}

  // The loop's thread takes requests, and will write the answers at the end of its turn. Takes over
  // `begun` unless there is a transaction already. False if the connection has ended.
  [[nodiscard]] bool beginTurn(std::shared_ptr<ProcessTransaction>& begun);
  [[nodiscard]] bool isInTurn() const { return inTurn; }
  void endTurn() { inTurn = false; }
  // Whether one more request may be taken; if not, reading pauses.
  [[nodiscard]] bool mayTake(bool withLongReplies);
  // No whole request is left: reading goes on, unless the next one would have to wait.
  void noneLeft();

  // What becomes of a request that was taken.
  void beginLarge() { largeOpen = paused = true; }
  void endLarge() { largeOpen = false; }
  void addUnanswered(bool isLong) {
    ++unanswered;
    unansweredLong += isLong ? 1 : 0;
  }
  void removeUnanswered(bool isLong) {
    --unanswered;
    unansweredLong -= isLong ? 1 : 0;
  }

  // Complete requests may wait in the input, and nothing wakes the loop for them.
  [[nodiscard]] bool isPaused() const { return paused; }
  [[nodiscard]] bool isContinuing() const { return continuing; }
  // Whether the pause can end, and nobody is about to end it. The caller does, with a turn.
  [[nodiscard]] bool claimContinuation();

  // The transaction, once no request and no answer is pending or the connection has ended; else
  // null. The caller drops it after the lock: its end may call out.
  [[nodiscard]] std::shared_ptr<ProcessTransaction> takeEndedTransaction();

 private:
  [[nodiscard]] bool mustWait() const;

  const ServiceContext& context;
  const ReplyWriter& output;
  // Held from the first request taken until no answer is pending or unsent.
  std::shared_ptr<ProcessTransaction> transaction;
  std::size_t takenInTurn = 0;
  std::size_t unanswered = 0;
  // The unanswered requests whose replies can be long, and whether the next request is such a one.
  std::size_t unansweredLong = 0;
  bool nextIsLong = false;
  bool inTurn = false;
  bool largeOpen = false;
  bool paused = false;
  bool continuing = false;
};

}  // namespace quenlet
