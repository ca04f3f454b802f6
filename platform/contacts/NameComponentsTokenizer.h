#pragma once

#include <string_view>

#include "platform/contacts/PersonNameComponents.h"

namespace quenlet {

// Splits a person's full name into its components: "Dr. Anna Maria van der Berg, PhD". Stateless;
// any thread. Knows honorific prefixes and suffixes, family-name particles, and a nickname in
// quotes or brackets. The given name comes first and the family name last; the other way round in
// Chinese, Japanese and Korean characters with a blank between ("山田 太郎"). One word before a
// comma, or particles and one word, is the family name ("van Gogh, Vincent"); behind more words
// than that, a comma begins a suffix ("Jane Doe, MSN"). Letter case matters only for a few short
// words ("op", "und") and suffixes ("II", "M.A.").
class NameComponentsTokenizer final {
 public:
  // The components found, each in the letter case of `fullName`; blanks between words become one
  // space. A single word is the given name, or the family name after an honorific ("Dr. Berg").
  // Text without a word has no components, and neither has an e-mail address; an address in angle
  // brackets behind the name, and quotes around the whole, are ignored. Text over 1,000 bytes, too
  // long for a name, is not split: all of it is the given name.
  [[nodiscard]] static PersonNameComponents componentsFromString(std::string_view fullName);
};

}  // namespace quenlet
