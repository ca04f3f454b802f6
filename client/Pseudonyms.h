#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "platform/foundation/KeyedHash.h"

namespace quenlet {

// Stands in for texts that may be personal, such as a file's path or a card's UID, where they must
// not show: in identifiers, which reach the agent's log. The same text always gets the same
// pseudonym, of sixteen hexadecimal digits. Under a secret key nobody can find the text by trying
// candidates. Immutable.
class Pseudonyms final {
 public:
  Pseudonyms(std::uint64_t firstHalfOfKey, std::uint64_t secondHalfOfKey)
      : digest(firstHalfOfKey, secondHalfOfKey) {}
  // Under a key that everybody knows, for programs that keep none.
  [[nodiscard]] static Pseudonyms withoutSecret() { return {0, 0}; }

  [[nodiscard]] std::string of(std::string_view text) const;

 private:
  KeyedHash digest;
};

}  // namespace quenlet
