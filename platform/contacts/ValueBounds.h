#pragma once

#include <cstddef>

// How large a value may be that comes from a card, a file or a message. What is larger is refused
// at the border, so that nothing behind it has to ask.
namespace quenlet {

inline constexpr std::size_t mostBytesInText = std::size_t{64} << 10;
inline constexpr std::size_t mostBytesInImage = std::size_t{8} << 20;

}  // namespace quenlet
