#pragma once

#include <tuple>
#include <utility>

#include "platform/foundation/Future.h"

namespace quenlet {

// Calls `operation` with a reply handler, waits until the handler is called, and gives back what it
// was called with, as a tuple of the types named. There is no time limit but the operation's own.
// Not for a reply handler, which runs where the awaited reply would have to come.
//
//   const auto [contact, error] = waitForReply<ContactPtr, ErrorPtr>(
//       [&](ContactReply reply) { agent.fetchDonatedMeCard(std::move(reply)); });
template <typename... Values, typename Operation>
[[nodiscard]] std::tuple<Values...> waitForReply(Operation operation) {
  const Promise<std::tuple<Values...>> promise;
  operation([promise](Values... values) {
    promise.succeed(std::tuple<Values...>(std::move(values)...));
  });
  return promise.future().result().takeLeft();
}

}  // namespace quenlet
