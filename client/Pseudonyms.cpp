#include "client/Pseudonyms.h"

namespace quenlet {

std::string Pseudonyms::of(std::string_view text) const {
  static constexpr char digits[] = "0123456789abcdef";
  const std::uint64_t hash = digest.hash<2, 4>(text);
  std::string result;
  for (int shift = 60; shift >= 0; shift -= 4) result += digits[hash >> shift & 0xF];
  return result;
}

}  // namespace quenlet
