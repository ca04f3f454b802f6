#pragma once

#include <vector>

#include "analytics/MeCardStatus.h"
#include "platform/contacts/Contact.h"
#include "platform/contacts/KeyDescriptor.h"

namespace quenlet {

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
