#pragma once

#include <cstdint>

namespace quenlet {

// Which kinds of field a card carries, as an option set. A value type.
class MeCardFields final {
 public:
  static const MeCardFields nameComponents;
  static const MeCardFields emailAddresses;
  static const MeCardFields phoneNumbers;
  static const MeCardFields postalAddresses;

  constexpr MeCardFields() = default;
  explicit constexpr MeCardFields(std::uint8_t bits) : raw(bits) {}

  [[nodiscard]] constexpr bool contains(MeCardFields options) const {
    return (raw & options.raw) == options.raw;
  }
  constexpr void insert(MeCardFields options) { raw |= options.raw; }

  friend constexpr bool operator==(MeCardFields, MeCardFields) = default;

 private:
  std::uint8_t raw = 0;
};

inline constexpr MeCardFields MeCardFields::nameComponents{1};
inline constexpr MeCardFields MeCardFields::emailAddresses{2};
inline constexpr MeCardFields MeCardFields::phoneNumbers{4};
inline constexpr MeCardFields MeCardFields::postalAddresses{8};

}  // namespace quenlet
