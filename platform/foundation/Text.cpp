#include "platform/foundation/Text.h"

#include <unicode/bytestream.h>
#include <unicode/casemap.h>
#include <unicode/normalizer2.h>
#include <unicode/uchar.h>
#include <unicode/utf8.h>
#include <algorithm>
#include <cstdint>
#include <cstring>
#include <limits>

namespace quenlet {
namespace {

std::size_t lengthOfASCIIPrefix(std::string_view text) {
  constexpr std::uint64_t highBits = 0x8080808080808080U;
  std::size_t length = 0;
  for (std::uint64_t word = 0; length + sizeof word <= text.size(); length += sizeof word) {
    std::memcpy(&word, text.data() + length, sizeof word);
    if (word & highBits) break;
  }
  while (length < text.size() && static_cast<signed char>(text[length]) >= 0) ++length;
  return length;
}

// Whether the Unicode library can take `text`: its sizes are 32-bit.
bool isUnicodeText(std::string_view text) {
  return text.size() <= std::numeric_limits<std::int32_t>::max() && isValidUTF8(text);
}

icu::StringPiece piece(std::string_view text) {
  return icu::StringPiece(text.data(), static_cast<std::int32_t>(text.size()));
}

// Whether `text` can be composed in time proportional to its size. Composing sorts the marks behind
// a letter, which takes the square of their number.
bool isCheapToCompose(std::string_view text) {
  constexpr std::size_t mostBytes = 4096;
  constexpr int mostMarksInARow = 30;
  if (text.size() > mostBytes) return false;
  int marks = 0;
  while (!text.empty() && marks <= mostMarksInARow) {
    const char32_t character = takeCharacter(text).value_or(U' ');
    marks = u_getCombiningClass(static_cast<UChar32>(character)) == 0 ? 0 : marks + 1;
  }
  return marks <= mostMarksInARow;
}

char lowercasedASCII(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }

}  // namespace

bool isASCII(std::string_view text) { return lengthOfASCIIPrefix(text) == text.size(); }

bool isValidUTF8(std::string_view text) {
  while (true) {
    text.remove_prefix(lengthOfASCIIPrefix(text));
    if (text.empty()) return true;
    if (!takeCharacter(text)) return false;
  }
}

std::optional<char32_t> takeCharacter(std::string_view& text) {
  const auto* bytes = reinterpret_cast<const std::uint8_t*>(text.data());
  std::size_t position = 0;
  UChar32 character = 0;
  U8_NEXT(bytes, position, text.size(), character);
  text.remove_prefix(position);
  if (character < 0) return std::nullopt;
  return static_cast<char32_t>(character);
}

void appendCharacter(std::string& output, char32_t character) {
  std::uint8_t bytes[U8_MAX_LENGTH];
  std::size_t length = 0;
  U8_APPEND_UNSAFE(bytes, length, character);
  output.append(reinterpret_cast<const char*>(bytes), length);
}

std::optional<int> decimalDigit(char32_t character) {
  const std::int32_t value = u_charDigitValue(static_cast<UChar32>(character));
  return value >= 0 ? std::optional<int>(value) : std::nullopt;
}

bool isBlank(char32_t character) { return u_isblank(static_cast<UChar32>(character)) != 0; }

std::string onOneLine(std::string_view text, std::size_t maximumSizeInBytes) {
  std::string line;
  while (!text.empty()) {
    const std::string_view before = text;
    const std::optional<char32_t> character = takeCharacter(text);
    const std::string_view taken = before.substr(0, before.size() - text.size());
    const bool isPlain = character && !isControlOrLineBreak(*character);
    const std::string_view written = isPlain ? taken : " ";
    if (written.size() > maximumSizeInBytes - line.size()) break;
    line += written;
  }
  return line;
}

std::size_t displayWidth(char32_t character) {
  constexpr char32_t softHyphen = 0xAD;
  if (character < 0x80 || character == softHyphen) return 1;
  const auto point = static_cast<UChar32>(character);
  if ((U_GET_GC_MASK(point) & (U_GC_MN_MASK | U_GC_ME_MASK | U_GC_CF_MASK)) != 0) return 0;
  const int syllable = u_getIntPropertyValue(point, UCHAR_HANGUL_SYLLABLE_TYPE);
  // Vowels and final consonants are drawn into the syllable that they continue.
  if (syllable == U_HST_VOWEL_JAMO || syllable == U_HST_TRAILING_JAMO) return 0;
  const int width = u_getIntPropertyValue(point, UCHAR_EAST_ASIAN_WIDTH);
  return width == U_EA_FULLWIDTH || width == U_EA_WIDE ? 2 : 1;
}

std::size_t displayWidth(std::string_view text) {
  std::size_t width = lengthOfASCIIPrefix(text);
  text.remove_prefix(width);
  while (!text.empty()) width += displayWidth(takeCharacter(text).value_or(U' '));
  return width;
}

std::string canonicalKey(std::string_view text) {
  if (isASCII(text) || !isCheapToCompose(text) || !isValidUTF8(text)) return std::string(text);
  UErrorCode status = U_ZERO_ERROR;
  const icu::Normalizer2* composer = icu::Normalizer2::getNFCInstance(status);
  if (U_FAILURE(status) || composer->isNormalizedUTF8(piece(text), status)) {
    return std::string(text);
  }
  std::string key;
  icu::StringByteSink<std::string> sink(&key);
  composer->normalizeUTF8(0, piece(text), sink, nullptr, status);
  return U_SUCCESS(status) ? key : std::string(text);
}

bool canonicallyEqual(std::string_view a, std::string_view b) {
  if (a == b) return true;
  if (isASCII(a) && isASCII(b)) return false;
  return canonicalKey(a) == canonicalKey(b);
}

std::string lowercased(std::string_view text) {
  std::string lower;
  if (isASCII(text)) {
    lower.resize(text.size());
    std::transform(text.begin(), text.end(), lower.begin(), lowercasedASCII);
    return lower;
  }
  if (!isUnicodeText(text)) return std::string(text);
  UErrorCode status = U_ZERO_ERROR;
  icu::StringByteSink<std::string> sink(&lower);
  constexpr char rootLocale[] = "";
  icu::CaseMap::utf8ToLower(rootLocale, 0, piece(text), sink, nullptr, status);
  return U_SUCCESS(status) ? lower : std::string(text);
}

std::string_view trimmed(std::string_view text) {
  constexpr std::string_view blanks = " \t\r\n";
  const std::size_t first = text.find_first_not_of(blanks);
  if (first == std::string_view::npos) return text.substr(text.size());
  return text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

}  // namespace quenlet
