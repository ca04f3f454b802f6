#pragma once

#include <optional>
#include <vector>

#include "analytics/MeCardFields.h"
#include "platform/contacts/Contact.h"
#include "platform/contacts/KeyDescriptor.h"

namespace quenlet {

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
