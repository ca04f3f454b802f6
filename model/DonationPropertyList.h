#pragma once

#include <optional>

#include "model/DonationText.h"
#include "platform/foundation/PropertyList.h"

namespace quenlet {

// The property-list form of a donation record, as it stands on the wire and in the donations file:
// one key for the content (with "label" and "style" beside it where the kind has them) and
// "origin". Stateless.
class DonationPropertyList final {
 public:
  DonationPropertyList() = delete;

  [[nodiscard]] static PropertyListDictionary write(const DecodedDonation& donation);
  // Nothing when `entries` is not a valid record. Unknown keys are ignored.
  [[nodiscard]] static std::optional<DecodedDonation> read(const PropertyListDictionary& entries);
};

}  // namespace quenlet
