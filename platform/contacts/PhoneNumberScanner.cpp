#include "platform/contacts/PhoneNumberScanner.h"

#include <algorithm>
#include <iterator>

#include "platform/foundation/Text.h"

namespace quenlet {
namespace {

constexpr std::size_t leastDigits = 2;
constexpr std::size_t mostDigits = 20;

std::optional<char> asciiDigit(char32_t character) {
  const std::optional<int> digit = decimalDigit(character);
  return digit ? std::optional(static_cast<char>('0' + *digit)) : std::nullopt;
}

// The byte order mark can come with copied text as well.
bool isInvisible(char32_t character) { return isDirectional(character) || character == 0xFEFF; }

bool isSeparator(char32_t character) {
  constexpr std::u32string_view punctuation = U"-./()[]\u2212\uFF0D\uFF0E\uFF08\uFF09\u30FC";
  return isBlank(character) || isInvisible(character) ||
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
  for (auto next = peek(); next && (isBlank(*next) || isInvisible(*next)); next = peek()) {
    advance();
  }
}

}  // namespace quenlet
