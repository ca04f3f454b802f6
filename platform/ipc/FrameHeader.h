#pragma once

#include <array>
#include <cstdint>
#include <string_view>

namespace quenlet {

// After a partOfReply more of the same reply follows; the last message of it is the `reply`.
enum class FrameKind : std::uint8_t { request, reply, failure, partOfReply };

// The header of each message: the number of bytes after the length field, the kind of message, and
// the identifier that ties an answer to its request. A value type. FrameReader checks the numbers.
struct FrameHeader final {
  static constexpr std::size_t sizeInBytes = 13;
  // The part of the header that `length` counts.
  static constexpr std::size_t countedBytes = 9;

  std::uint32_t length = countedBytes;
  std::uint8_t kind = 0;
  std::uint64_t identifier = 0;

  [[nodiscard]] static FrameHeader make(FrameKind kind, std::uint64_t identifier,
                                        std::size_t bodySize);
  // `bytes` must hold at least sizeInBytes.
  [[nodiscard]] static FrameHeader decode(std::string_view bytes);
  [[nodiscard]] std::array<char, sizeInBytes> encode() const;
};

}  // namespace quenlet
