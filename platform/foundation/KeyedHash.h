#pragma once

#include <compare>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace quenlet {

// Stands for a text: two texts have the same one only by a chance of one in 2^128, which nobody can
// raise without the secret key. Differs from process to process. A value type.
struct Fingerprint final {
  std::uint64_t first = 0;
  std::uint64_t second = 0;

  [[nodiscard]] static Fingerprint of(std::string_view text);
  // False for the one that stands for no text.
  [[nodiscard]] explicit operator bool() const { return (first | second) != 0; }
  friend auto operator<=>(const Fingerprint&, const Fingerprint&) = default;
};

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
  // The variant of 128 bits.
  template <int CompressionRounds, int FinalRounds>
  [[nodiscard]] Fingerprint fingerprint(std::string_view text) const;

 private:
  const std::uint64_t first;
  const std::uint64_t second;
};

// For the standard library's hash tables.
struct FingerprintHash final {
  std::size_t operator()(const Fingerprint& key) const { return key.first; }
};
struct TextHash final {
  std::size_t operator()(std::string_view text) const { return KeyedHash::of(text); }
};

}  // namespace quenlet
