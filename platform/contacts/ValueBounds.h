#pragma once

#include <cstddef>

// The largest values accepted from a card, a file or a message. Larger ones are refused at the
// border, so the code behind it need not check.
namespace quenlet {

inline constexpr std::size_t mostBytesInText = std::size_t{64} << 10;
inline constexpr std::size_t mostBytesInImage = std::size_t{8} << 20;

}  // namespace quenlet
