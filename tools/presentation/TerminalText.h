#pragma once

#include <cstddef>
#include <string>
#include <string_view>

// Text from donors as a terminal may show it. Pure functions.
namespace quenlet {

// `text` on one line. Everything that could control a terminal or reorder its output is replaced by
// U+FFFD: control characters, line and paragraph separators, directional marks, invalid UTF-8.
[[nodiscard]] std::string printable(std::string_view text);

// The number of characters in valid UTF-8, the unit of column widths.
[[nodiscard]] std::size_t countCharacters(std::string_view text);

}  // namespace quenlet
