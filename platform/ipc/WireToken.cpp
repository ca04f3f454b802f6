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

bool takeText(std::string_view& rest, std::string_view& text) {
  const std::optional<std::uint64_t> size = takeSize(rest);
  if (!size || *size > rest.size()) return false;
  text = rest.substr(0, *size);
  rest.remove_prefix(*size);
  return true;
}

bool takeCount(std::string_view& rest, std::size_t valuesEach, std::uint64_t& count) {
  const std::optional<std::uint64_t> announced = takeSize(rest);
  if (!announced || *announced > rest.size() / valuesEach) return false;
  count = *announced * valuesEach;
  return true;
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
      return takeText(rest, token.text);
    case WireType::list:
      return takeCount(rest, 1, token.number);
    case WireType::dictionary:
      return takeCount(rest, 2, token.number);
    case WireType::object:
      token.number = 1;
      return takeText(rest, token.text) && !rest.empty();
  }
  return false;
}

}  // namespace

std::optional<WireToken> WireToken::take(std::string_view& rest) {
  const std::optional<std::uint8_t> tag = takeByte(rest);
  if (!tag || *tag > static_cast<std::uint8_t>(WireType::object)) return std::nullopt;
  WireToken token;
  token.type = static_cast<WireType>(*tag);
  if (!takeBody(rest, token)) return std::nullopt;
  return token;
}

}  // namespace quenlet
