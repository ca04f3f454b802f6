#pragma once

#include <cstddef>
#include <string_view>

// Which characters of a text can belong to an e-mail address: the tables behind
// EmailAddressScanner. Pure functions.
namespace quenlet::email_characters {

[[nodiscard]] constexpr bool isDigit(char32_t character) {
  return character >= '0' && character <= '9';
}

[[nodiscard]] constexpr bool isASCIILetter(char32_t character) {
  return (character >= 'a' && character <= 'z') || (character >= 'A' && character <= 'Z');
}

// Beyond ASCII, all but punctuation, symbols and emoji, blanks and private use.
[[nodiscard]] bool isLetter(char32_t character);

// Whether a character is of a script that writes words without blanks between them: Thai and its
// neighbours, Khmer, the scripts of China, Japan and Korea.
[[nodiscard]] bool isUnspaced(char32_t character);

// The first character of `text` with its size. At the end and for invalid bytes it is '\0', which
// no address contains.
struct Character final {
  char32_t value = 0;
  std::size_t size = 1;

  explicit Character(std::string_view text);
};

}  // namespace quenlet::email_characters
