#pragma once

#include <optional>
#include <ostream>
#include <string>

#include "platform/contacts/VCard.h"
#include "tools/owner/WholeCard.h"
#include "tools/presentation/Screen.h"

namespace quenlet {

// Shows all that is known of the owner. Stateless.
class WholeCardPresenter final {
 public:
  WholeCardPresenter() = delete;

  // A line for each value with its label and source; nothing for an empty card.
  static void writeText(std::ostream& out, const WholeCard& card, const Screen& screen);
  // As CardPresenter, with a "source" for each value, "own card" or "donated".
  static void writeJSON(std::ostream& out, const WholeCard& card);
  // The first value of a kind: "name", "email", "phone" or "address".
  [[nodiscard]] static std::optional<std::string> firstOf(const WholeCard& card,
                                                          const std::string& kind);
  // "line 7: TEL without a usable value".
  [[nodiscard]] static std::string textOf(const SkippedEntry& fault);
};

}  // namespace quenlet
