#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

// Unicode operations on UTF-8 text. All are pure functions of their arguments, independent of any
// locale, and leave ASCII text to a fast path that does not touch the Unicode library.
// Text that is not valid UTF-8 is taken as bytes: it equals only the same bytes and has no case.
// So is text beyond 2 GiB, which the Unicode library cannot address.
namespace quenlet {

[[nodiscard]] bool isValidUTF8(std::string_view text);
[[nodiscard]] bool isASCII(std::string_view text);

// Takes the first character off the front of `text`, which must not be empty. Nothing, with the
// offending bytes taken off, when `text` does not begin with a valid character.
[[nodiscard]] std::optional<char32_t> takeCharacter(std::string_view& text);

// Appends the UTF-8 form of `character`, a Unicode scalar value (no surrogate, at most U+10FFFF).
void appendCharacter(std::string& output, char32_t character);

// Whether a character can end a line or steer a terminal: a control character (C0, DEL, C1) or one
// of Unicode's own line and paragraph separators.
[[nodiscard]] constexpr bool isControlOrLineBreak(char32_t character) {
  return character < 0x20 || (character >= 0x7F && character < 0xA0) || character == 0x2028 ||
         character == 0x2029;
}

// `text` for a line of output: a blank stands for each such character and each invalid piece. Of
// more than `maximumSizeInBytes` only the first whole characters that fit.
[[nodiscard]] std::string onOneLine(std::string_view text,
                                    std::size_t maximumSizeInBytes = std::string::npos);

// Whether a character turns the direction of the text around it: marks, embeddings, overrides and
// isolates. A name that holds one can be shown as another name.
[[nodiscard]] constexpr bool isDirectional(char32_t character) {
  return (character >= 0x202A && character <= 0x202E) ||
         (character >= 0x2066 && character <= 0x2069) || character == 0x200E ||
         character == 0x200F || character == 0x061C;
}

// A text that two texts share exactly when they are canonically equivalent (they differ at most in
// the composition of characters), so that equivalence becomes a comparison of bytes. Text that is
// composed already (NFC), as most is, is its own key. So is text that nobody writes and that would
// take the square of its size: over 4 KiB, or with more than 30 combining marks in a row. It shares
// its key at most with a text that is equivalent, so that equality of keys stays an equivalence.
[[nodiscard]] std::string canonicalKey(std::string_view text);

// Whether two texts have the same canonical key.
[[nodiscard]] bool canonicallyEqual(std::string_view a, std::string_view b);

// The full default lower-case mapping ("İ" to "i̇", final sigma included).
[[nodiscard]] std::string lowercased(std::string_view text);

// `text` without blanks (space, tab, CR, LF) at both ends; a view into `text`.
[[nodiscard]] std::string_view trimmed(std::string_view text);

}  // namespace quenlet
