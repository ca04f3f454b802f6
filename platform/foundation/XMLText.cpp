#include "platform/foundation/XMLText.h"
#include "platform/foundation/Text.h"

#include <bit>
#include <charconv>
#include <cstdint>
#include <cstring>
#include <optional>

namespace quenlet {
namespace {

constexpr std::uint64_t everyByte(std::uint8_t byte) { return 0x0101010101010101U * byte; }

// Eight bytes at a time: sets the high bit of each byte below `limit`. Only the lowest mark is
// reliable, since the subtraction borrows from the bytes above it.
constexpr std::uint64_t bytesBelow(std::uint64_t word, std::uint8_t limit) {
  return (word - everyByte(limit)) & ~word & everyByte(0x80);
}

// Marks, in the same way, the bytes that need a closer look: not ASCII, control characters, markup.
constexpr std::uint64_t markedBytes(std::uint64_t word) {
  static_assert(('<' | 2) == '>');  // one comparison finds both brackets
  return (word & everyByte(0x80)) | bytesBelow(word, 0x20) | bytesBelow(word ^ everyByte('&'), 1) |
         bytesBelow((word | everyByte(2)) ^ everyByte('>'), 1);
}

constexpr bool isPlain(char c) {
  const bool isASCIIText = static_cast<signed char>(c) >= 0x20 || c == '\t' || c == '\n';
  return isASCIIText && c != '&' && c != '<' && c != '>';
}

std::size_t lengthOfPlainASCIIPrefix(std::string_view text) {
  // On a big-endian machine the lowest mark is the last byte's; there the loop below finds the
  // place.
  constexpr bool marksTellPlace = std::endian::native == std::endian::little;
  std::size_t length = 0;
  for (std::uint64_t word = 0; length + sizeof word <= text.size(); length += sizeof word) {
    std::memcpy(&word, text.data() + length, sizeof word);
    if (const std::uint64_t marks = markedBytes(word)) {
      if (marksTellPlace) length += static_cast<std::size_t>(std::countr_zero(marks)) / 8;
      break;
    }
  }
  // Byte by byte from there: over tabs and line feeds, which are marked too, and the last few
  // bytes.
  while (length < text.size() && isPlain(text[length])) ++length;
  return length;
}

bool isAllowed(char32_t character) {
  if (character < 0x20) return character == '\t' || character == '\n' || character == '\r';
  return character < 0xD800 || (character > 0xDFFF && character < 0xFFFE) ||
         (character > 0xFFFF && character <= 0x10FFFF);
}

// Empty when the character needs no escape.
std::string_view escapeOf(char c) {
  switch (c) {
    case '&':
      return "&amp;";
    case '<':
      return "&lt;";
    case '>':
      return "&gt;";
    case '\r':
      return "&#13;";
    default:
      return {};
  }
}

std::optional<char32_t> characterOfNumber(std::string_view digits) {
  int base = 10;
  if (digits.starts_with('x')) {
    digits.remove_prefix(1);
    base = 16;
  }
  std::uint32_t number = 0;
  const char* end = digits.data() + digits.size();
  const auto [stop, failure] = std::from_chars(digits.data(), end, number, base);
  if (failure != std::errc() || stop != end || !isAllowed(number)) return std::nullopt;
  return number;
}

// The character of a reference without its ampersand and semicolon.
std::optional<char32_t> referredCharacter(std::string_view name) {
  if (name.starts_with('#')) return characterOfNumber(name.substr(1));
  if (name == "amp") return '&';
  if (name == "lt") return '<';
  if (name == "gt") return '>';
  if (name == "quot") return '"';
  if (name == "apos") return '\'';
  return std::nullopt;
}

}  // namespace

std::size_t lengthOfPlainPrefix(std::string_view text) {
  std::string_view rest = text;
  while (true) {
    rest.remove_prefix(lengthOfPlainASCIIPrefix(rest));
    if (rest.empty() || static_cast<signed char>(rest.front()) >= 0) break;
    std::string_view beyond = rest;
    const std::optional<char32_t> character = takeCharacter(beyond);
    if (!character || !isAllowed(*character)) break;
    rest = beyond;
  }
  return text.size() - rest.size();
}

std::size_t findForbiddenCharacter(std::string_view text) {
  std::size_t position = 0;
  while (true) {
    position += lengthOfPlainPrefix(text.substr(position));
    if (position == text.size()) return std::string_view::npos;
    if (escapeOf(text[position]).empty()) return position;
    ++position;
  }
}

bool appendEscapedXML(std::string& output, std::string_view text) {
  while (true) {
    const std::size_t plain = lengthOfPlainPrefix(text);
    output.append(text.substr(0, plain));
    if (plain == text.size()) return true;
    const std::string_view escape = escapeOf(text[plain]);
    if (escape.empty()) return false;
    output.append(escape);
    text.remove_prefix(plain + 1);
  }
}

bool appendUnescapedXML(std::string& output, std::string_view content) {
  while (true) {
    const std::size_t ampersand = content.find('&');
    output.append(content.substr(0, ampersand));
    if (ampersand == std::string_view::npos) return true;
    content.remove_prefix(ampersand + 1);
    // Stopping at the next "&" keeps the time linear: no semicolon far away is searched for again
    // and again.
    const std::size_t semicolon = content.find_first_of(";&");
    if (semicolon == std::string_view::npos || content[semicolon] == '&') return false;
    const auto character = referredCharacter(content.substr(0, semicolon));
    if (!character) return false;
    appendCharacter(output, *character);
    content.remove_prefix(semicolon + 1);
  }
}

}  // namespace quenlet
