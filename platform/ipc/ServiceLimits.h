#pragma once

#include <cstddef>

namespace quenlet {

// What one service grants its peers. A value type; tests lower it.
struct ServiceLimits final {
  // For one message, without the four bytes of its length.
  std::size_t messageSizeInBytes = std::size_t{32} << 20;
  // The same, of a peer that is only refused.
  std::size_t refusedMessageSizeInBytes = std::size_t{4} << 10;
  // For one connection; at the limit it is not read until replies have gone out.
  std::size_t unansweredRequests = 128;
  // For one connection; with more of them unsent, it is not read either.
  std::size_t unsentBytesAhead = std::size_t{256} << 10;
  // For one connection, requests that expect a long reply, until it has left.
  std::size_t longReplies = 2;
  // Larger requests are checked and performed beside the thread that reads.
  std::size_t quickRequestBytes = std::size_t{256} << 10;
  // Whether a reply that is larger than a message goes out as several; else it is a failure.
  bool repliesInParts = true;
  // For one connection, in one turn; then the others have theirs.
  std::size_t requestsInTurn = 32;
  std::size_t connections = 1024;
  // For one connection; a peer that leaves more unread gets no further answer, but is disconnected.
  std::size_t unsentBytes = std::size_t{64} << 20;
  // For all connections together, messages that are not whole yet and answers not sent. Beyond,
  // connections end.
  std::size_t heldBytes = std::size_t{256} << 20;

  // The standard limits, but no more connections than leave this process 64 of the descriptors that
  // it may have now: files, watches and timers must not fail because of peers.
  [[nodiscard]] static ServiceLimits forThisProcess();
};

}  // namespace quenlet
