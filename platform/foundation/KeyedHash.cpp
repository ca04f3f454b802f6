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
};

// Up to eight bytes, the first one lowest.
std::uint64_t wordOf(std::string_view bytes) {
  std::uint64_t word = 0;
  for (std::size_t place = 0; place < bytes.size(); ++place) {
    word |= std::uint64_t{static_cast<unsigned char>(bytes[place])} << (8 * place);
  }
  return word;
}

KeyedHash withRandomKey() {
  std::random_device source;
  const auto half = [&source] { return std::uint64_t{source()} << 32 | source(); };
  const std::uint64_t first = half();
  return {first, half()};
}

}  // namespace

template <int CompressionRounds, int FinalRounds>
std::uint64_t KeyedHash::hash(std::string_view text) const {
  constexpr std::size_t wordSize = sizeof(std::uint64_t);
  // The constants are the algorithm's own: "somepseudorandomlygeneratedbytes".
  SipState state{first ^ 0x736f6d6570736575, second ^ 0x646f72616e646f6d,
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
  state.c ^= 0xff;
  state.mix(FinalRounds);
  return state.a ^ state.b ^ state.c ^ state.d;
}

template std::uint64_t KeyedHash::hash<1, 3>(std::string_view) const;
template std::uint64_t KeyedHash::hash<2, 4>(std::string_view) const;

std::uint64_t KeyedHash::of(std::string_view text) {
  static const KeyedHash ofProcess = withRandomKey();
  // Fewer rounds suffice because nobody outside ever sees the hashes.
  return ofProcess.hash<1, 3>(text);
}

}  // namespace quenlet
