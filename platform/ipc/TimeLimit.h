#pragma once

#include <algorithm>
#include <chrono>

#include "quenlet/Error.h"

namespace quenlet {

// How long a client waits for its service: for the connection and the first reply, and for each
// later one. What hangs shows at the first reply, long before a large request would be given up.
struct Patience final {
  Patience(std::chrono::milliseconds everyReply)  // NOLINT(google-explicit-constructor)
      : Patience(everyReply, everyReply) {}
  Patience(std::chrono::milliseconds firstReply, std::chrono::milliseconds laterReplies)
      : first(std::min(firstReply, laterReplies)), later(laterReplies) {}

  std::chrono::milliseconds first;
  std::chrono::milliseconds later;
};

// The limit of one wait. Immutable.
class TimeLimit final {
 public:
  using Instant = std::chrono::steady_clock::time_point;

  explicit TimeLimit(std::chrono::milliseconds mostWaited);

  // The deadline of a wait that begins now.
  [[nodiscard]] Instant deadline() const;
  // The timedOut error.
  [[nodiscard]] ErrorPtr passed() const;

  // Waits until `socket` is ready for one of `events`, those of poll(2), or has failed, and returns
  // the events. Returns 0 at the deadline, and when a signal interrupts the wait.
  [[nodiscard]] static int readyEvents(int socket, int events, Instant deadline);

 private:
  std::chrono::milliseconds limit;
};

}  // namespace quenlet
