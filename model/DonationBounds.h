#pragma once

#include <cstddef>
#include <optional>
#include <string>

#include "platform/contacts/ValueBounds.h"
#include "platform/foundation/PropertyList.h"

namespace quenlet {

// What one donated record may hold to be taken in, whatever way it comes: one donor must neither
// keep the others' values off the disk nor make every comparison slow. Stateless.
class DonationBounds final {
 public:
  static constexpr std::size_t textSizeInBytes = mostBytesInText;
  static constexpr std::size_t imageSizeInBytes = mostBytesInImage;

  // What keeps a record, given in its property-list form, from being taken in: a text field or an
  // image beyond the bound, or an empty bundle or donation identifier, under which it could not be
  // read back. A sentence that names the field and the bound and quotes no content; nothing when
  // all is well. Keys that no record has are passed over.
  [[nodiscard]] static std::optional<std::string> violation(const PropertyListDictionary& record);
};

}  // namespace quenlet
