#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

#include "platform/contacts/PersonNameComponents.h"
#include "platform/contacts/PostalAddress.h"
#include "platform/foundation/KeyedHash.h"

namespace quenlet {

// Fingerprints by which values are found and compared, so that searches among many records read no
// texts. Two texts have one key when they are canonically equivalent. Pure functions.
namespace DonationKeys {

[[nodiscard]] Fingerprint ofText(std::string_view text);
// The same in any letter case.
[[nodiscard]] Fingerprint ofFoldedText(std::string_view text);
// Equal for names that are the same person's: given and family name count, in any letter case; an
// absent one equals only an absent one.
[[nodiscard]] Fingerprint ofName(const PersonNameComponents& name);
// Equal for addresses that are one entry on a card: one line without the country, in any letter
// case. None for an address without text.
[[nodiscard]] Fingerprint ofPostalAddress(const PostalAddress& address);

}  // namespace DonationKeys

// Finds places by key: an open-addressed table, at most half full, in which a look-up costs one or
// two steps. A value type; one thread at a time.
//
//   slot, at key & (size - 1)     places
//   0  key of "a:2", place 1  ─▶  1
//   1  free
//   2  key of "a:1", place 0  ─▶  0
//   3  free
class KeyIndex final {
 public:
  // Has room for this many keys.
  explicit KeyIndex(std::size_t capacity = 0);

  [[nodiscard]] bool hasRoomFor(std::size_t keys) const { return keys * 2 <= slots.size(); }
  // The place of `key`; adds it with `place` when it is not there. Needs room for one more key.
  std::size_t findOrAdd(const Fingerprint& key, std::size_t place);
  static constexpr std::size_t none = SIZE_MAX;
  // The place of `key`, or none.
  [[nodiscard]] std::size_t find(const Fingerprint& key) const { return slots[slotOf(key)].place; }

 private:
  struct Slot final {
    Fingerprint key;
    std::size_t place = none;
  };
  // The slot of the key, or the free one where it belongs.
  [[nodiscard]] std::size_t slotOf(const Fingerprint& key) const;

  std::vector<Slot> slots;
};

}  // namespace quenlet
