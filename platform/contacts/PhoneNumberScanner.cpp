#include "platform/contacts/PhoneNumberScanner.h"

#include <algorithm>
#include <iterator>

#include "platform/foundation/Text.h"

namespace quenlet {
namespace {

constexpr std::size_t leastDigits = 2;
constexpr std::size_t mostDigits = 20;

// The digit zero of every script of the basic plane; the other nine follow each.
constexpr char32_t zeros[] = {0x0030, 0x0660, 0x06F0, 0x07C0, 0x0966, 0x09E6, 0x0A66, 0x0AE6,
                              0x0B66, 0x0BE6, 0x0C66, 0x0CE6, 0x0D66, 0x0DE6, 0x0E50, 0x0ED0,
                              0x0F20, 0x1040, 0x1090, 0x17E0, 0x1810, 0x1946, 0x19D0, 0x1A80,
                              0x1A90, 0x1B50, 0x1BB0, 0x1C40, 0x1C50, 0xA620, 0xA8D0, 0xA900,
                              0xA9D0, 0xA9F0, 0xAA50, 0xABF0, 0xFF10};

std::optional<char> asciiDigit(char32_t character) {
  const auto* above = std::upper_bound(std::begin(zeros), std::end(zeros), character);
  if (above == std::begin(zeros)) return std::nullopt;
  const char32_t distance = character - *std::prev(above);
  if (distance > 9) return std::nullopt;
  return static_cast<char>('0' + distance);
}

bool isBlank(char32_t character) {
  return character == ' ' || character == '\t' || character == 0xA0 ||
         (character >= 0x2000 && character <= 0x200A) || character == 0x202F || character == 0x3000;
}

bool isDirectionMark(char32_t character) {
  return character == 0x200E || character == 0x200F ||
         (character >= 0x202A && character <= 0x202E) ||
         (character >= 0x2066 && character <= 0x2069) || character == 0xFEFF;
}

bool isSeparator(char32_t character) {
  constexpr std::u32string_view punctuation = U"-./()[]\u2212\uFF0D\uFF0E\uFF08\uFF09\u30FC";
  return isBlank(character) || isDirectionMark(character) ||
         (character >= 0x2010 && character <= 0x2015) ||
         punctuation.find(character) != std::u32string_view::npos;
}

bool isPlus(char32_t character) { return character == '+' || character == 0xFF0B; }

bool isASCIIDigit(char character) { return character >= '0' && character <= '9'; }

bool isASCIILetter(char character) {
  return (character >= 'a' && character <= 'z') || (character >= 'A' && character <= 'Z');
}

std::string digitsOf(std::string_view text) {
  std::string digits;
  std::copy_if(text.begin(), text.end(), std::back_inserter(digits), isASCIIDigit);
  return digits;
}

// The size of the UTF-8 sequence that starts with `lead`; 0 when none does.
std::size_t sequenceSize(unsigned char lead) {
  if (lead < 0x80) return 1;
  if (lead >= 0xC2 && lead < 0xE0) return 2;
  if (lead >= 0xE0 && lead < 0xF0) return 3;
  return 0;  // Nothing beyond the basic plane belongs in a number.
}

}  // namespace

std::optional<std::string> PhoneNumberScanner::scan() {
  skipBlanks();
  skipWord("tel:");
  std::string number;
  while (const auto character = peek()) {
    if (!scanCharacter(*character, number)) break;
  }
  if (!atEnd() && !scanExtension()) return std::nullopt;
  const std::size_t count = number.size() - (number.starts_with('+') ? 1 : 0);
  if (count < leastDigits || count > mostDigits) return std::nullopt;
  return number;
}

// Takes one character of the number proper; false at the first that is none.
bool PhoneNumberScanner::scanCharacter(char32_t character, std::string& number) {
  if (const auto digit = asciiDigit(character)) {
    number += *digit;
  } else if (isPlus(character) && number.empty()) {
    number += '+';
  } else if (!isSeparator(character)) {
    return false;
  } else if (number.starts_with('+') && number.size() > 1 && skipWord("(0)")) {
    return true;
  }
  advance();
  return true;
}

// What follows the number proper, to the end of the text.
bool PhoneNumberScanner::scanExtension() {
  if (text[position] == ';' && scanLinkParameters()) return true;
  if (text[position] == ';' || text[position] == ',') return scanDialledAfterPause();
  if (!skipWord("extension") && !skipWord("ext.") && !skipWord("ext") && !skipWord("x.") &&
      !skipWord("x") && !skipWord("#")) {
    return false;
  }
  skipBlanks();
  for (auto next = peek(); next && asciiDigit(*next); next = peek()) {
    extensionDigits += *asciiDigit(*next);
    advance();
  }
  skipBlanks();
  return atEnd() && !extensionDigits.empty() && extensionDigits.size() <= mostDigits;
}

// ";ext=12;phone-context=+49": names of letters and dashes, values without blanks.
bool PhoneNumberScanner::scanLinkParameters() {
  std::string_view rest = trimmed(text.substr(position));
  while (rest.starts_with(';')) {
    rest.remove_prefix(1);
    const std::string_view parameter = rest.substr(0, rest.find(';'));
    const std::size_t equals = parameter.find('=');
    if (equals == std::string_view::npos || equals == 0) return false;
    const auto isNameCharacter = [](char c) { return isASCIILetter(c) || c == '-'; };
    const auto isValueCharacter = [](char c) { return c > ' ' && c != 0x7F; };
    const std::string_view name = parameter.substr(0, equals);
    const std::string_view value = parameter.substr(equals + 1);
    if (!std::all_of(name.begin(), name.end(), isNameCharacter) || value.empty() ||
        !std::all_of(value.begin(), value.end(), isValueCharacter)) {
      return false;
    }
    if (lowercased(name) == "ext") extensionDigits = digitsOf(value);
    rest.remove_prefix(parameter.size());
  }
  return rest.empty();
}

bool PhoneNumberScanner::scanDialledAfterPause() {
  const std::string_view rest = trimmed(text.substr(position));
  extensionDigits = digitsOf(rest);
  return !extensionDigits.empty() && std::all_of(rest.begin(), rest.end(), [](char c) {
    return isASCIIDigit(c) || std::string_view(",;*# ").find(c) != std::string_view::npos;
  });
}

std::optional<char32_t> PhoneNumberScanner::peek() {
  if (atEnd()) return std::nullopt;
  const auto lead = static_cast<unsigned char>(text[position]);
  characterSize = sequenceSize(lead);
  if (characterSize == 0 || characterSize > text.size() - position) return std::nullopt;
  if (characterSize == 1) return lead;
  char32_t character = lead & (0xFFu >> (characterSize + 1));
  for (std::size_t i = 1; i < characterSize; ++i) {
    const auto next = static_cast<unsigned char>(text[position + i]);
    if ((next & 0xC0) != 0x80) return std::nullopt;
    character = (character << 6) | (next & 0x3F);
  }
  return character;
}

bool PhoneNumberScanner::skipWord(std::string_view lowerCaseWord) {
  const std::string_view found = text.substr(position, lowerCaseWord.size());
  if (!isASCII(found) || lowercased(found) != lowerCaseWord) return false;
  position += found.size();
  return true;
}

void PhoneNumberScanner::skipBlanks() {
  for (auto next = peek(); next && (isBlank(*next) || isDirectionMark(*next)); next = peek()) {
    advance();
  }
}

}  // namespace quenlet
