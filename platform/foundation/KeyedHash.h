#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace quenlet {

// A hash of texts under a secret key (SipHash), for tables whose keys come from outside. Without
// the secret key nobody can choose texts that collide, which would turn each look-up into a scan.
// Immutable.
class KeyedHash final {
 public:
  KeyedHash(std::uint64_t firstHalfOfKey, std::uint64_t secondHalfOfKey)
      : first(firstHalfOfKey), second(secondHalfOfKey) {}

  // Under a random key that this process chooses at its first call. Differs from process to
  // process: do not store it.
  [[nodiscard]] static std::uint64_t of(std::string_view text);

  // The template arguments are the rounds for each eight bytes and those at the end.
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
