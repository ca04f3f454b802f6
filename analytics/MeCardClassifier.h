#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "platform/contacts/Contact.h"
#include "platform/contacts/KeyDescriptor.h"

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

// Whether there is a card, and if so, its fields. A value type.
class MeCardStatus final {
 public:
  [[nodiscard]] static MeCardStatus present(MeCardFields fields) { return MeCardStatus(fields); }
  [[nodiscard]] static MeCardStatus none() { return MeCardStatus(std::nullopt); }

  // Nothing without a card.
  [[nodiscard]] const std::optional<MeCardFields>& fields() const { return carried; }

  friend bool operator==(const MeCardStatus&, const MeCardStatus&) = default;

 private:
  explicit MeCardStatus(std::optional<MeCardFields> fields) : carried(fields) {}
  std::optional<MeCardFields> carried;
};

// Reduces a card to the kinds of field that it carries. Stateless; any thread.
class MeCardClassifier final {
 public:
  // The fields to fetch the card with.
  [[nodiscard]] static const std::vector<KeyDescriptor>& descriptors();

  // Whether the given or the family name has text.
  [[nodiscard]] bool hasNameFieldsWithContact(const Contact& contact) const;
  // `none` for null.
  [[nodiscard]] MeCardStatus classifyMeCard(const Contact* contact) const;
};

}  // namespace quenlet
