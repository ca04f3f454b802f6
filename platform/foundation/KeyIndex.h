#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "platform/foundation/KeyedHash.h"

namespace quenlet {

// Finds places by key: an open-addressed table, at most two thirds full, in which a look-up costs
// one or two steps. Keeps 32 bits of each key; `keyAt` gives the key at a place, to confirm a hit.
// A value type; one thread at a time.
//
//   slot, at key & (size - 1)              places
//   0  bits of the key of "a:2", 1 + 1  ─▶  1
//   1  free
//   2  bits of the key of "a:1", 0 + 1  ─▶  0
//   3  free
class KeyIndex final {
 public:
  // Has room for this many keys.
  explicit KeyIndex(std::size_t capacity = 0) : slots(std::bit_ceil(capacity + capacity / 2 + 2)) {}

  static constexpr std::size_t none = SIZE_MAX;

  [[nodiscard]] bool hasRoomFor(std::size_t keys) const { return keys + keys / 2 < slots.size(); }
  // Fetches what a look-up of `key` will read: worth it a few look-ups ahead.
  void prefetch(const Fingerprint& key) const { __builtin_prefetch(&slots[firstSlotOf(key)]); }
  // The place of `key`, or none.
  template <typename KeyAt>
  [[nodiscard]] std::size_t find(const Fingerprint& key, const KeyAt& keyAt) const {
    return std::size_t{slots[slotOf(key, keyAt)].placeAndOne} - 1;
  }
  // The place of `key`; adds it with `place` when it is not there. Needs room for one more key.
  template <typename KeyAt>
  std::size_t findOrAdd(const Fingerprint& key, std::size_t place, const KeyAt& keyAt) {
    Slot& slot = slots[slotOf(key, keyAt)];
    if (slot.placeAndOne == 0) slot = {bitsOf(key), static_cast<std::uint32_t>(place + 1)};
    return slot.placeAndOne - 1;
  }

 private:
  struct Slot final {
    std::uint32_t bits = 0;
    std::uint32_t placeAndOne = 0;  // 0 while free
  };

  [[nodiscard]] static std::uint32_t bitsOf(const Fingerprint& key) {
    return static_cast<std::uint32_t>(key.second);
  }
  [[nodiscard]] std::size_t firstSlotOf(const Fingerprint& key) const {
    return key.first & (slots.size() - 1);
  }
  // The slot of the key, or the free one where it belongs.
  template <typename KeyAt>
  [[nodiscard]] std::size_t slotOf(const Fingerprint& key, const KeyAt& keyAt) const {
    std::size_t position = firstSlotOf(key);
    while (slots[position].placeAndOne != 0) {
      const Slot& slot = slots[position];
      if (slot.bits == bitsOf(key) && keyAt(slot.placeAndOne - 1) == key) break;
      position = (position + 1) & (slots.size() - 1);
    }
    return position;
  }

  std::vector<Slot> slots;
};

}  // namespace quenlet
