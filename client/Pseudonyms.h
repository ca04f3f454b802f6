#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "platform/foundation/KeyedHash.h"

namespace quenlet {

// Stands in for texts that may be personal, such as a file's path or a card's UID, where they must
// not show: in identifiers, which reach the agent's log. The same text always gets the same
// pseudonym, of twelve hexadecimal digits. Under a secret key nobody can find the text by trying
// candidates. Immutable.
class Pseudonyms final {
 public:
  static constexpr std::size_t keySizeInBytes = 16;

  // Under a key of that size.
  explicit Pseudonyms(const std::string& key);
  // Under a key that everybody knows, for programs that keep none.
  [[nodiscard]] static Pseudonyms withoutSecret() {
    return Pseudonyms(std::string(keySizeInBytes, '\0'));
  }

  [[nodiscard]] std::string of(std::string_view text) const;

 private:
  KeyedHash digest;
};

}  // namespace quenlet
