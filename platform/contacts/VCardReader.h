#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/contacts/VCard.h"
#include "platform/contacts/VCardBuilder.h"
#include "platform/contacts/VCardLineReader.h"

namespace quenlet {

// Gives out the cards of a text one by one: keeps together what stands between BEGIN and END. For
// one thread.
//
//   state     BEGIN              END                 another line
//   outside   → inside           error               passed over
//   inside    → within an AGENT, if the line before was an empty one;
//             else error, → inside the next card
//                                → outside, a card   a property of the card
//   within    the same           → inside            passed over
class VCardReader final {
 public:
  // `source` outlives the reader. Lists and images are read for the `keys` only.
  VCardReader(std::string_view source, std::vector<KeyDescriptor> keys)
      : wantedKeys(std::move(keys)), lines(source) {}

  // The next card, or why one cannot be read; nothing behind the last. A text without a card gives
  // one error.
  [[nodiscard]] std::optional<Result<VCard>> next();

 private:
  using Outcome = std::optional<Result<VCard>>;

  [[nodiscard]] Outcome take(std::string_view line);
  [[nodiscard]] Outcome begin();
  [[nodiscard]] Outcome end();
  [[nodiscard]] Outcome cardWithoutEnd();
  [[nodiscard]] Outcome atEnd();
  [[nodiscard]] static Outcome fail(std::size_t lineNumber, const char* offence);

  const std::vector<KeyDescriptor> wantedKeys;
  VCardLineReader lines;
  std::optional<VCardBuilder> builder;  // of the card that is read
  std::size_t agentDepth = 0;           // how many cards within it are open
  bool agentOpens = false;              // whether the last line was an empty AGENT
  std::size_t places = 0;
  bool hasGivenOut = false;
};

}  // namespace quenlet
