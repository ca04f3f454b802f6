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

// Characters at which phones pause before they dial on.
constexpr std::string_view pauses = ",;pPwW";

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

// Takes one character of the number proper; false at the first that does not belong to it.
bool PhoneNumberScanner::scanCharacter(char32_t character, std::string& number) {
  if (const auto digit = asciiDigit(character)) {
    number += *digit;
  } else if (isPlus(character) && number.empty()) {
    number += '+';
  } else if (!isSeparator(character)) {
    return false;
  } else if ((number.starts_with('+') && number.size() > 1 && skipWord("(0)")) ||
             (!number.empty() && skipRemark())) {
    return true;
  }
  advance();
  return true;
}

// Takes everything behind the number proper, to the end of the text.
bool PhoneNumberScanner::scanExtension() {
  if (text[position] == ';' && scanLinkParameters()) return true;
  if (pauses.find(text[position]) != pauses.npos) return scanDialledAfterPause();
  constexpr std::string_view words[] = {"extension", "extn.", "extn", "ext.",
                                        "ext",       "x.",    "x",    "#"};
  if (std::none_of(std::begin(words), std::end(words),
                   [this](std::string_view word) { return skipWord(word); })) {
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
    return isASCIIDigit(c) || c == '*' || c == '#' || c == ' ' || pauses.find(c) != pauses.npos;
  });
}

std::optional<char32_t> PhoneNumberScanner::peek() {
  if (atEnd()) return std::nullopt;
  std::string_view rest = text.substr(position);
  const std::optional<char32_t> character = takeCharacter(rest);
  characterSize = text.size() - position - rest.size();
  return character;
}

// "(private)": words in brackets without a digit. The number may go on behind them.
bool PhoneNumberScanner::skipRemark() {
  if (text[position] != '(') return false;
  std::string_view rest = text.substr(position + 1);
  bool hasWords = false;
  while (!rest.empty() && rest.front() != ')') {
    const std::optional<char32_t> character = takeCharacter(rest);
    if (!character || *character == '(' || asciiDigit(*character) ||
        isControlOrLineBreak(*character)) {
      return false;
    }
    hasWords = hasWords || !isSeparator(*character);
  }
  if (rest.empty() || !hasWords) return false;
  position = text.size() - rest.size() + 1;
  return true;
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
