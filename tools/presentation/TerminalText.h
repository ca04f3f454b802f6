#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

// Text from donors as a terminal may show it. Pure functions. Widths are counted in columns, see
// displayWidth().
namespace quenlet {

// `text` on one line. Everything that could control a terminal or reorder its output is replaced by
// U+FFFD: control characters, line and paragraph separators, directional marks, invalid UTF-8.
[[nodiscard]] std::string printable(std::string_view text);

// `text`, which must be valid UTF-8, with an ellipsis in its middle if it is wider than `width`:
// identifiers differ at their ends.
[[nodiscard]] std::string shortened(std::string_view text, std::size_t width);

// `text`, which must be valid UTF-8, in lines of at most `width`: broken at blanks, which then go;
// a word that is too long behind a punctuation mark of addresses or identifiers, else anywhere.
// At least one line. A character that is wider than a line becomes an ellipsis.
[[nodiscard]] std::vector<std::string> wrapped(std::string_view text, std::size_t width);

}  // namespace quenlet
