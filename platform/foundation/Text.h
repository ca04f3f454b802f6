#pragma once

#include <string>
#include <string_view>

// Unicode operations on UTF-8 text. All are pure functions of their arguments, independent of any
// locale, and leave ASCII text to a fast path that does not touch the Unicode library.
// Text that is not valid UTF-8 is taken as bytes: it equals only the same bytes and has no case.
namespace quenlet {

[[nodiscard]] bool isValidUTF8(std::string_view text);
[[nodiscard]] bool isASCII(std::string_view text);

// A text that two texts share exactly when they are canonically equivalent (they differ at most in
// the composition of characters), so that equivalence becomes a comparison of bytes.
[[nodiscard]] std::string canonicalKey(std::string_view text);

// Whether two texts are canonically equivalent.
[[nodiscard]] bool canonicallyEqual(std::string_view a, std::string_view b);

// The full default lower-case mapping ("İ" to "i̇", final sigma included).
[[nodiscard]] std::string lowercased(std::string_view text);

// `text` without blanks (space, tab, CR, LF) at both ends; a view into `text`.
[[nodiscard]] std::string_view trimmed(std::string_view text);

}  // namespace quenlet
