#pragma once

#include <string_view>

#include "platform/contacts/PersonNameComponents.h"

namespace quenlet {

// Takes a person's full name apart: "Dr. Anna Maria van der Berg, PhD". Stateless; any thread.
// Knows honorific prefixes and suffixes, family-name particles, and a nickname in quotes or in
// brackets. It reads the given name first and the family name last, but the other way round in
// Chinese, Japanese and Korean characters with a blank between ("山田 太郎"). Before a comma, one
// word or a particle and a word are the family name ("van Gogh, Vincent"); what follows more of
// them is a suffix ("Jane Doe, MSN"). Letter case tells nothing.
class NameComponentsTokenizer final {
 public:
  // The components that are there, each in the letter case of `fullName`; blanks between words
  // become one space. A single word is the given name, or the family name after an honorific
  // ("Dr. Berg"). Text without a word has no component, neither has an e-mail address; one in angle
  // brackets behind the name, and quotes around all of it, are left out. What is far too long for a
  // name (over 1,000 bytes) is not taken apart: all of it is the given name.
  [[nodiscard]] static PersonNameComponents componentsFromString(std::string_view fullName);
};

}  // namespace quenlet
