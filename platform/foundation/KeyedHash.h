#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace quenlet {

// A hash of texts under a secret key (SipHash), for tables whose texts others choose: who does not
// know the key cannot choose many texts with one hash, which would make each look-up a scan.
// Immutable.
class KeyedHash final {
 public:
  KeyedHash(std::uint64_t firstHalfOfKey, std::uint64_t secondHalfOfKey)
      : first(firstHalfOfKey), second(secondHalfOfKey) {}

  // Under a random key that this process keeps for its life. Not to be stored.
  [[nodiscard]] static std::uint64_t of(std::string_view text);

  // With so many rounds for each eight bytes and at the end.
  template <int CompressionRounds, int FinalRounds>
  [[nodiscard]] std::uint64_t hash(std::string_view text) const;

 private:
  const std::uint64_t first;
  const std::uint64_t second;
};

// For the standard library's hash tables.
struct TextHash final {
  std::size_t operator()(std::string_view text) const { return KeyedHash::of(text); }
};

}  // namespace quenlet
