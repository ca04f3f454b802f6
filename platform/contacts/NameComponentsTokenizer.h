#pragma once

#include <string_view>

#include "platform/contacts/PersonNameComponents.h"

namespace quenlet {

// Takes a person's full name apart: "Dr. Anna Maria van der Berg, PhD". Stateless; any thread.
// Knows honorific prefixes and suffixes, family-name particles, "Family, Given" and a nickname in
// quotes. It reads the given name first and the family name last; a language that writes them the
// other way round needs the comma.
class NameComponentsTokenizer final {
 public:
  // The components that are there, each in the letter case of `fullName`; blanks between words
  // become one space. A single word is the given name, or the family name after an honorific
  // ("Dr. Berg"). Text without a word has no component. What is far too long for a name (over 1,000
  // bytes) is not taken apart: all of it is the given name.
  [[nodiscard]] static PersonNameComponents componentsFromString(std::string_view fullName);
};

}  // namespace quenlet
