#pragma once

#include <functional>
#include <string_view>

#include "browser/host/MessageReader.h"
#include "protocol/CorvelProtocol.h"

namespace quenlet {

// Answers the extension:
//
//   {"id": 7, "ask": "card"}      the whole card, see CardAnswer
//   {"id": 8, "ask": "changes"}   {"id": 8, "watching": true}, then {"event": "changed"}, once at
//                                 the beginning and whenever the donated card has become another
//   anything else                 {"id": …, "error": "unknownWord"} or "malformed"
//
// It changes nothing, neither files nor the agent. One thread.
class BrowserHost final {
 public:
  // Sends one message, without its length.
  using Send = std::function<void(std::string_view message)>;
  // Has `changed` called whenever the card changes, from now on.
  using Watch = std::function<void(std::function<void()> changed)>;

  // `asked` outlives it, and waits for its replies.
  BrowserHost(CorvelProtocol& asked, Send sends, Watch watches);

  // Answers all whole messages. False when what came cannot be a message: the program must end.
  [[nodiscard]] bool take(std::string_view bytes);

 private:
  void answer(std::string_view message);
  void startWatching();

  CorvelProtocol& agent;
  const Send send;
  const Watch watch;
  MessageReader reader;
  bool isWatching = false;
};

}  // namespace quenlet
