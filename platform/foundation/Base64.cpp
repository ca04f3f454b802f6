#include "platform/foundation/Base64.h"

#include <array>
#include <cstdint>

namespace quenlet {
namespace {

constexpr std::string_view alphabet =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr std::uint8_t foreign = 0xFF;
constexpr std::uint8_t blank = 0xFE;
constexpr std::uint8_t filler = 0xFD;

constexpr std::array<std::uint8_t, 256> digitValues = [] {
  std::array<std::uint8_t, 256> values{};
  values.fill(foreign);
  for (std::size_t i = 0; i < alphabet.size(); ++i) {
    values[static_cast<std::uint8_t>(alphabet[i])] = static_cast<std::uint8_t>(i);
  }
  for (const char c : {' ', '\t', '\r', '\n'}) values[static_cast<std::uint8_t>(c)] = blank;
  values['='] = filler;
  return values;
}();

std::uint32_t byteAt(std::string_view bytes, std::size_t index) {
  return index < bytes.size() ? static_cast<std::uint8_t>(bytes[index]) : 0U;
}

void appendGroup(std::string& bytes, std::uint32_t group) {
  for (const int shift : {16, 8, 0}) bytes.push_back(static_cast<char>(group >> shift & 0xFF));
}

}  // namespace

void appendBase64(std::string& output, std::string_view bytes) {
  std::size_t end = output.size();
  output.resize(end + (bytes.size() + 2) / 3 * 4);
  for (std::size_t i = 0; i < bytes.size(); i += 3) {
    const std::uint32_t group =
        byteAt(bytes, i) << 16 | byteAt(bytes, i + 1) << 8 | byteAt(bytes, i + 2);
    for (const int shift : {18, 12, 6, 0}) output[end++] = alphabet[group >> shift & 63];
  }
  const std::size_t missing = (3 - bytes.size() % 3) % 3;
  for (std::size_t i = 1; i <= missing; ++i) output[end - i] = '=';
}

std::optional<std::string> decodedBase64(std::string_view text, Base64Padding padding) {
  std::string bytes;
  bytes.reserve(text.size() / 4 * 3);
  std::uint32_t group = 0;
  std::size_t digits = 0;
  std::size_t paddings = 0;
  for (const char c : text) {
    const std::uint8_t value = digitValues[static_cast<std::uint8_t>(c)];
    if (value == blank) continue;
    if (value == foreign || (paddings > 0 && value != filler)) return std::nullopt;
    if (value == filler && ++paddings > 2) return std::nullopt;
    // Padding is read as zero bits; the bytes made of it are cut off at the end.
    group = group << 6 | (value == filler ? 0U : value);
    if (++digits % 4 != 0) continue;
    appendGroup(bytes, group);
    group = 0;
  }
  if (const std::size_t missing = (4 - digits % 4) % 4; missing > 0) {
    paddings += missing;
    if (padding == Base64Padding::required || paddings > 2) return std::nullopt;
    appendGroup(bytes, group << 6 * missing);
  }
  bytes.resize(bytes.size() - paddings);
  return bytes;
}

}  // namespace quenlet
