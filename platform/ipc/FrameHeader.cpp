#include "platform/ipc/FrameHeader.h"

namespace quenlet {

namespace {

template <typename Number>
void store(char* to, Number number) {
  for (std::size_t i = 0; i < sizeof(Number); ++i) {
    to[i] = static_cast<char>(number >> (8 * i) & 0xff);
  }
}

template <typename Number>
Number load(const char* from) {
  Number number = 0;
  for (std::size_t i = sizeof(Number); i-- > 0;) {
    number = static_cast<Number>(number << 8 | static_cast<std::uint8_t>(from[i]));
  }
  return number;
}

}  // namespace

FrameHeader FrameHeader::make(FrameKind kind, std::uint64_t identifier, std::size_t bodySize) {
  return {static_cast<std::uint32_t>(countedBytes + bodySize), static_cast<std::uint8_t>(kind),
          identifier};
}

FrameHeader FrameHeader::decode(std::string_view bytes) {
  return {load<std::uint32_t>(bytes.data()), static_cast<std::uint8_t>(bytes[4]),
          load<std::uint64_t>(bytes.data() + 5)};
}

std::array<char, FrameHeader::sizeInBytes> FrameHeader::encode() const {
  std::array<char, sizeInBytes> bytes;
  store(bytes.data(), length);
  bytes[4] = static_cast<char>(kind);
  store(bytes.data() + 5, identifier);
  return bytes;
}

}  // namespace quenlet
