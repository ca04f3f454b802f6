#pragma once

#include <tuple>
#include <utility>

#include "platform/foundation/Future.h"

namespace quenlet {

// Calls `operation` with a reply handler, waits until that is called, and returns its arguments as
// a tuple of the given types. The only time limit is the operation's own. Never call it in a reply
// handler: it would block the thread that delivers replies.
//
//   const auto [contact, error] = waitForReply<ContactPtr, ErrorPtr>(
//       [&](ContactReply reply) { agent.fetchDonatedMeCard(std::move(reply)); });
template <typename... Values, typename Operation>
[[nodiscard]] std::tuple<Values...> waitForReply(Operation operation) {
  const Promise<std::tuple<Values...>> promise;
  operation([promise](Values... values) {
    promise.succeed(std::tuple<Values...>(std::move(values)...));
  });
  return promise.future().result().takeValue();
}

}  // namespace quenlet
