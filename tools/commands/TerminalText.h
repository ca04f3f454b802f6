#pragma once

#include <cstddef>
#include <string>
#include <string_view>

// Text from donors as a terminal may show it. Pure functions.
namespace quenlet {

// `text` on one line, with everything that could steer a terminal or reorder what it shows
// replaced by U+FFFD: control characters, line and paragraph separators, directional marks, bytes
// that are no UTF-8.
[[nodiscard]] std::string printable(std::string_view text);

// The number of characters of valid UTF-8; what a column's width is counted in.
[[nodiscard]] std::size_t countCharacters(std::string_view text);

}  // namespace quenlet
