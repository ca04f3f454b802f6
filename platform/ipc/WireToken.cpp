#include "platform/ipc/WireToken.h"

#include <bit>
#include <cstring>

namespace quenlet {

namespace {

std::optional<std::uint8_t> takeByte(std::string_view& rest) {
  if (rest.empty()) return std::nullopt;
  const auto byte = static_cast<std::uint8_t>(rest.front());
  rest.remove_prefix(1);
  return byte;
}

std::optional<std::uint64_t> takeFixed(std::string_view& rest) {
  if (rest.size() < sizeof(std::uint64_t)) return std::nullopt;
  std::uint64_t number = 0;
  if constexpr (std::endian::native == std::endian::little) {
    std::memcpy(&number, rest.data(), sizeof(number));
  } else {
    for (int i = 7; i >= 0; --i) number = number << 8 | static_cast<std::uint8_t>(rest[i]);
  }
  rest.remove_prefix(sizeof(number));
  return number;
}

// Seven bits a byte, lowest first. Only the shortest form of a number is accepted.
std::optional<std::uint64_t> takeSize(std::string_view& rest) {
  std::uint64_t number = 0;
  for (int shift = 0; shift < 64; shift += 7) {
    const std::optional<std::uint8_t> byte = takeByte(rest);
    if (!byte) return std::nullopt;
    const std::uint64_t bits = *byte & 0x7f;
    if (shift == 63 && bits > 1) return std::nullopt;
    number |= bits << shift;
    if (*byte < 0x80) {
      if (bits == 0 && shift > 0) return std::nullopt;
      return number;
    }
  }
  return std::nullopt;
}

// What begins with a size.
bool takeSized(std::string_view& rest, WireToken& token) {
  const std::optional<std::uint64_t> size = takeSize(rest);
  if (!size) return false;
  if (token.type == WireType::list || token.type == WireType::dictionary) {
    const std::size_t valuesEach = token.type == WireType::list ? 1 : 2;
    if (*size > rest.size() / valuesEach) return false;
    token.number = *size * valuesEach;
    return true;
  }
  if (*size > rest.size()) return false;
  token.text = rest.substr(0, *size);
  rest.remove_prefix(*size);
  token.number = token.type == WireType::object ? 1 : 0;
  return token.type != WireType::object || !rest.empty();
}

bool takeBody(std::string_view& rest, WireToken& token) {
  switch (token.type) {
    case WireType::null:
      return true;
    case WireType::boolean: {
      const std::optional<std::uint8_t> byte = takeByte(rest);
      token.number = byte.value_or(0);
      return byte && *byte <= 1;
    }
    case WireType::integer:
    case WireType::real:
    case WireType::date: {
      const std::optional<std::uint64_t> bits = takeFixed(rest);
      token.number = bits.value_or(0);
      return bits.has_value();
    }
    case WireType::string:
    case WireType::data:
    case WireType::list:
    case WireType::dictionary:
    case WireType::object:
      return takeSized(rest, token);
  }
  return false;
}

}  // namespace

std::optional<WireToken> WireToken::take(std::string_view& rest) {
  // In registers, unlike `rest`.
  std::string_view left = rest;
  const std::optional<std::uint8_t> tag = takeByte(left);
  if (!tag || *tag > static_cast<std::uint8_t>(WireType::object)) return std::nullopt;
  WireToken token;
  token.type = static_cast<WireType>(*tag);
  if (!takeBody(left, token)) return std::nullopt;
  rest = left;
  return token;
}

}  // namespace quenlet
