#pragma once

#include <array>
#include <charconv>
#include <string>

namespace quenlet {

// Appends the decimal form of `number`; a floating-point number gets the shortest form that reads
// back to the same bits. Independent of any locale.
template <typename Number>
void appendNumber(std::string& output, Number number) {
  std::array<char, 32> digits{};
  const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), number).ptr;
  output.append(digits.data(), end);
}

}  // namespace quenlet
