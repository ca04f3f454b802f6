#pragma once

#include <optional>
#include <string>

#include "model/DonationValue.h"
#include "platform/foundation/PropertyList.h"

namespace quenlet {

// What the feedback store knows of one value: its content without label, style and origin, as the
// entry that the file holds and as the text by which two contents are compared. A value type.
struct FeedbackContent final {
  // Equal for two contents exactly when they are the same to the owner: e-mail addresses with the
  // same normal form, phone numbers with the same digits, names and postal addresses with
  // canonically equivalent fields, images with the same bytes.
  std::string key;
  PropertyListDictionary entry;

  [[nodiscard]] static FeedbackContent contentOfValue(const DonationValue& value);
  // The key of an entry read from a file; nothing when it describes no content.
  [[nodiscard]] static std::optional<std::string> keyOfEntry(const PropertyListDictionary& entry);
};

}  // namespace quenlet
