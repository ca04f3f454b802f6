#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

// Unicode operations on UTF-8 text. All are pure functions of their arguments, independent of any
// locale; ASCII text takes a fast path that does without the Unicode library. Text that is not
// valid UTF-8 is treated as bytes: it equals only the same bytes and has no case. The same goes for
// text beyond 2 GiB, which the Unicode library cannot address.
namespace quenlet {

[[nodiscard]] bool isValidUTF8(std::string_view text);
[[nodiscard]] bool isASCII(std::string_view text);

// Takes the first character off the front of `text`, which must not be empty. When `text` does not
// begin with a valid character, the invalid bytes are taken off and the result is nothing.
[[nodiscard]] std::optional<char32_t> takeCharacter(std::string_view& text);

// Appends the UTF-8 form of `character`, a Unicode scalar value (no surrogate, at most U+10FFFF).
void appendCharacter(std::string& output, char32_t character);

// The value of a decimal digit of any script; nothing for other characters.
[[nodiscard]] std::optional<int> decimalDigit(char32_t character);
// Whether a character is a tab, or a blank of any width.
[[nodiscard]] bool isBlank(char32_t character);

// Whether a character can end a line or steer a terminal: a control character (C0, DEL, C1) or one
// of Unicode's own line and paragraph separators.
[[nodiscard]] constexpr bool isControlOrLineBreak(char32_t character) {
  return character < 0x20 || (character >= 0x7F && character < 0xA0) || character == 0x2028 ||
         character == 0x2029;
}

// `text` for a line of output, with a blank for each such character and each invalid piece. Cut at
// the last whole character that fits into `maximumSizeInBytes`.
[[nodiscard]] std::string onOneLine(std::string_view text,
                                    std::size_t maximumSizeInBytes = std::string::npos);

// Whether a character changes the direction of the text around it: marks, embeddings, overrides and
// isolates. With one of them, a name can be displayed as another name.
[[nodiscard]] constexpr bool isDirectional(char32_t character) {
  return (character >= 0x202A && character <= 0x202E) ||
         (character >= 0x2066 && character <= 0x2069) || character == 0x200E ||
         character == 0x200F || character == 0x061C;
}

// The number of columns that a character takes on a terminal: 2 for the wide ones of East Asia and
// most emoji; 0 for what joins the character before it or has no shape of its own, such as accents
// and zero-width joiners. The width of a control character means nothing.
[[nodiscard]] std::size_t displayWidth(char32_t character);
// The sum over all characters of valid UTF-8.
[[nodiscard]] std::size_t displayWidth(std::string_view text);

// A text's composed form (NFC): two texts have the same key exactly when they are canonically
// equivalent, that is, differ at most in the composition of characters. This turns equivalence into
// a comparison of bytes. Most text is composed already and is its own key.
//
// Text over 4 KiB or with more than 30 combining marks in a row is also its own key: nobody writes
// it, and composing it could take quadratic time. Such a text may miss an equivalent one, but equal
// keys always mean equivalent texts.
[[nodiscard]] std::string canonicalKey(std::string_view text);

// Whether two texts have the same canonicalKey().
[[nodiscard]] bool canonicallyEqual(std::string_view a, std::string_view b);

// The full default lower-case mapping ("İ" to "i̇", final sigma included).
[[nodiscard]] std::string lowercased(std::string_view text);

// `text` without blanks (space, tab, CR, LF) at both ends; a view into `text`.
[[nodiscard]] std::string_view trimmed(std::string_view text);

}  // namespace quenlet
