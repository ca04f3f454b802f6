#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "protocol/CorvelProtocol.h"
#include "quenlet/Date.h"
#include "tools/page/PageContent.h"

namespace quenlet {

// Whether the whole card can be had, and if not, why.
enum class ReadingState : std::uint8_t {
  ready,
  empty,  // neither an own card nor a donation
  // The others may come with the owner's own card, which needs no agent.
  donationsOff,
  noAgent,  // or one that does not answer
  notEntitled,
  failed,
};

// The word for a state in an answer: "ready", "noAgent".
[[nodiscard]] const char* wordFor(ReadingState state);
// What to tell the owner; empty when all is well.
[[nodiscard]] const char* sentenceFor(ReadingState state);

// All that is known of the owner at one moment, as "quenlet me" and "quenlet show" know it.
// Immutable.
class CardReading final {
 public:
  // Asks the agent at most once, and changes nothing.
  [[nodiscard]] static CardReading of(CorvelProtocol& agent, Date now);

  const ReadingState state;
  // Further sentences: what can be done, and what could not be read.
  const std::vector<std::string> notes;
  const PageContent content;
};

}  // namespace quenlet
