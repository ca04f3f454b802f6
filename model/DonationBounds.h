#pragma once

#include <optional>
#include <string>

#include "platform/foundation/PropertyList.h"

namespace quenlet {

// Limits of one donated record, from any source (platform/contacts/ValueBounds.h): no donor may
// keep the others' values off the disk, or slow every comparison down. Stateless.
class DonationBounds final {
 public:
  // Why a record, given in its property-list form, must be refused: a text field or an image over
  // its bound, or an empty bundle or donation identifier, under which it could not be read back.
  // The sentence names field and bound and quotes no content. Nothing for a good record; unknown
  // keys are ignored.
  [[nodiscard]] static std::optional<std::string> violation(const PropertyListDictionary& record);
};

}  // namespace quenlet
