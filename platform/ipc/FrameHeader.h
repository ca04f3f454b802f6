#pragma once

#include <array>
#include <cstdint>
#include <string_view>

namespace quenlet {

// A part of a reply has more of it behind it, up to the reply itself.
enum class FrameKind : std::uint8_t { request, reply, failure, partOfReply };

// What stands in front of each message: how many bytes follow the length, what the message is, and
// the identifier that ties an answer to its request. A value type. Whether the numbers make sense
// is for FrameReader to judge.
struct FrameHeader final {
  static constexpr std::size_t sizeInBytes = 13;
  // Of the part that the length counts.
  static constexpr std::size_t countedBytes = 9;

  std::uint32_t length = countedBytes;
  std::uint8_t kind = 0;
  std::uint64_t identifier = 0;

  [[nodiscard]] static FrameHeader make(FrameKind kind, std::uint64_t identifier,
                                        std::size_t bodySize);
  // `bytes` are at least sizeInBytes.
  [[nodiscard]] static FrameHeader decode(std::string_view bytes);
  [[nodiscard]] std::array<char, sizeInBytes> encode() const;
};

}  // namespace quenlet
