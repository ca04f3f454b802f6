#pragma once

#include <array>
#include <charconv>
#include <string>

namespace quenlet {

// Appends the decimal form of `number`, for a floating-point number the shortest that reads back to
// the same bits. Independent of any locale.
template <typename Number>
void appendNumber(std::string& output, Number number) {
  std::array<char, 32> digits{};
  const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), number).ptr;
  output.append(digits.data(), end);
}

}  // namespace quenlet
