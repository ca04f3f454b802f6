#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "platform/contacts/PersonNameComponents.h"
#include "platform/foundation/KeyedHash.h"

namespace quenlet {

// A text in canonical form with its hash: a look-up reads the text only to confirm a hit. Does not
// own the text. A value type.
struct ComparisonKey final {
  std::string_view text;
  std::uint32_t hash = 0;

  [[nodiscard]] static std::uint32_t hashOf(std::string_view text) {
    return static_cast<std::uint32_t>(KeyedHash::of(text));
  }
  [[nodiscard]] static ComparisonKey of(std::string_view text) { return {text, hashOf(text)}; }

  friend bool operator==(const ComparisonKey& a, const ComparisonKey& b) {
    return a.hash == b.hash && a.text == b.text;
  }
};

// For hash tables of such keys.
struct ComparisonKeyHash final {
  std::size_t operator()(const ComparisonKey& key) const { return key.hash; }
};

// Decides whether two names are the same person's: given and family name, lower-cased and in
// canonical form, as one text. An absent part equals only an absent one. A value type.
struct NameKey final {
  std::string text;

  [[nodiscard]] static NameKey keyForName(const PersonNameComponents& name);
  friend bool operator==(const NameKey&, const NameKey&) = default;
};

}  // namespace quenlet
