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

// Gives out the cards of a text one by one, from BEGIN to END. For one thread.
//
//   state     BEGIN                            END                  another line
//   outside   → inside                         error                skipped
//   inside    behind an empty AGENT → agent,   a card, → outside    property of the card
//             else an error, → inside
//   agent     as inside                        → inside             skipped
//
// "agent" is inside a card within the card, and cards can nest further. Any other BEGIN means that
// the END of the card is missing: that card is an error, and the next one begins.
class VCardReader final {
 public:
  // `source` outlives the reader. Lists and images are read for the `keys` only.
  VCardReader(std::string_view source, std::vector<KeyDescriptor> keys)
      : wantedKeys(std::move(keys)), lines(source) {}

  // The next card, or the error of one that cannot be read; nothing after the last. A text without
  // a card gives one error.
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
