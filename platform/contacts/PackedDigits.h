#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace quenlet {

// Up to 20 decimal digits, four bits each, the last digit lowest: comparing the ends of two numbers
// takes an exclusive or and a mask. A value type.
class PackedDigits final {
 public:
  PackedDigits() = default;
  explicit PackedDigits(std::string_view asciiDigits) {
    for (const char digit : asciiDigits) {
      high = (high << 4) | static_cast<std::uint32_t>(low >> 60);
      low = (low << 4) | static_cast<std::uint64_t>(digit - '0');
      ++count;
    }
  }

  [[nodiscard]] std::size_t size() const { return count; }
  // Whether one number ends with all digits of the other.
  [[nodiscard]] bool endsAlike(const PackedDigits& other) const {
    const std::uint32_t shared = std::min(count, other.count);
    return ((low ^ other.low) & mask(shared)) == 0 &&
           (shared <= digitsInLow || ((high ^ other.high) & mask(shared - digitsInLow)) == 0);
  }
  // Whether the last `digits` digits, at most 15, are the same.
  [[nodiscard]] bool endsAlike(const PackedDigits& other, std::uint32_t digits) const {
    return std::min(count, other.count) >= digits && ((low ^ other.low) & mask(digits)) == 0;
  }
  [[nodiscard]] std::string text() const {
    std::string digits;
    for (std::uint32_t left = count; left-- > 0;) {
      const std::uint64_t shifted =
          left < digitsInLow ? low >> (4 * left) : high >> (4 * (left - digitsInLow));
      digits += static_cast<char>('0' + (shifted & 0xF));
    }
    return digits;
  }

  friend bool operator==(const PackedDigits&, const PackedDigits&) = default;

 private:
  static constexpr std::uint32_t digitsInLow = 16;

  static std::uint64_t mask(std::uint32_t digits) {
    return digits >= digitsInLow ? ~std::uint64_t{0} : (std::uint64_t{1} << (4 * digits)) - 1;
  }

  std::uint64_t low = 0;
  std::uint32_t high = 0;
  std::uint32_t count = 0;
};

}  // namespace quenlet
