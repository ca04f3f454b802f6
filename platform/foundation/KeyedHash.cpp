// SipHash: four words of state, mixed by rounds of additions, rotations and exclusive ors. The text
// goes in eight bytes at a time; the last word holds the bytes left over and, in its top byte, the
// length, which tells a text from the same text with zeros behind it.

#include "platform/foundation/KeyedHash.h"

#include <bit>
#include <random>

namespace quenlet {
namespace {

struct SipState final {
  std::uint64_t a;
  std::uint64_t b;
  std::uint64_t c;
  std::uint64_t d;

  void mix(int rounds) {
    while (rounds-- > 0) {
      a += b;
      c += d;
      b = std::rotl(b, 13) ^ a;
      d = std::rotl(d, 16) ^ c;
      a = std::rotl(a, 32);
      c += b;
      a += d;
      b = std::rotl(b, 17) ^ c;
      d = std::rotl(d, 21) ^ a;
      c = std::rotl(c, 32);
    }
  }
  std::uint64_t folded() const { return a ^ b ^ c ^ d; }
};

// Up to eight bytes, the first one lowest.
std::uint64_t wordOf(std::string_view bytes) {
  std::uint64_t word = 0;
  for (std::size_t place = 0; place < bytes.size(); ++place) {
    word |= std::uint64_t{static_cast<unsigned char>(bytes[place])} << (8 * place);
  }
  return word;
}

// The state once the text has gone in. `variant` tells the results of the two sizes apart.
template <int CompressionRounds>
SipState absorbed(std::uint64_t first, std::uint64_t second, std::uint64_t variant,
                  std::string_view text) {
  constexpr std::size_t wordSize = sizeof(std::uint64_t);
  // The constants are the algorithm's own: "somepseudorandomlygeneratedbytes".
  SipState state{first ^ 0x736f6d6570736575, second ^ 0x646f72616e646f6d ^ variant,
                 first ^ 0x6c7967656e657261, second ^ 0x7465646279746573};
  const auto take = [&state](std::uint64_t word) {
    state.d ^= word;
    state.mix(CompressionRounds);
    state.a ^= word;
  };
  const std::uint64_t size = text.size();
  for (; text.size() >= wordSize; text.remove_prefix(wordSize)) {
    take(wordOf(text.substr(0, wordSize)));
  }
  take(wordOf(text) | size << 56);
  return state;
}

KeyedHash withRandomKey() {
  std::random_device source;
  const auto half = [&source] { return std::uint64_t{source()} << 32 | source(); };
  const std::uint64_t first = half();
  return {first, half()};
}

const KeyedHash& ofProcess() {
  static const KeyedHash hash = withRandomKey();
  return hash;
}

}  // namespace

template <int CompressionRounds, int FinalRounds>
std::uint64_t KeyedHash::hash(std::string_view text) const {
  SipState state = absorbed<CompressionRounds>(first, second, 0, text);
  state.c ^= 0xff;
  state.mix(FinalRounds);
  return state.folded();
}

template <int CompressionRounds, int FinalRounds>
Fingerprint KeyedHash::fingerprint(std::string_view text) const {
  SipState state = absorbed<CompressionRounds>(first, second, 0xee, text);
  state.c ^= 0xee;
  state.mix(FinalRounds);
  Fingerprint result{state.folded(), 0};
  state.b ^= 0xdd;
  state.mix(FinalRounds);
  result.second = state.folded();
  return result;
}

template std::uint64_t KeyedHash::hash<1, 3>(std::string_view) const;
template std::uint64_t KeyedHash::hash<2, 4>(std::string_view) const;
template Fingerprint KeyedHash::fingerprint<2, 4>(std::string_view) const;

// Fewer rounds suffice because nobody outside ever sees the hashes.
std::uint64_t KeyedHash::of(std::string_view text) { return ofProcess().hash<1, 3>(text); }

Fingerprint Fingerprint::of(std::string_view text) { return ofProcess().fingerprint<1, 3>(text); }

}  // namespace quenlet
