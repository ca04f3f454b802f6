#include "client/Pseudonyms.h"

#include <cstdint>
#include <cstring>

namespace quenlet {
namespace {

std::uint64_t numberAt(const std::string& bytes, std::size_t place) {
  std::uint64_t number = 0;
  std::memcpy(&number, bytes.data() + place, sizeof number);
  return number;
}

}  // namespace

Pseudonyms::Pseudonyms(const std::string& key)
    : digest(numberAt(key, 0), numberAt(key, sizeof(std::uint64_t))) {}

std::string Pseudonyms::of(std::string_view text) const {
  static constexpr char digits[] = "0123456789abcdef";
  const std::uint64_t hash = digest.hash<2, 4>(text);
  std::string result;
  for (int shift = 44; shift >= 0; shift -= 4) result += digits[hash >> shift & 0xF];
  return result;
}

}  // namespace quenlet
