#pragma once

#include <optional>
#include <string>

#include "model/DonationValue.h"
#include "platform/foundation/PropertyList.h"

namespace quenlet {

// A donated value as the feedback store sees it: the content without label, style and origin, both
// as an entry of the file and as a key to compare by. A value type.
struct FeedbackContent final {
  // Two contents have the same key exactly when they are the same to the owner: e-mail addresses
  // with the same normal form, phone numbers with the same digits, names and postal addresses with
  // canonically equivalent fields, images with the same bytes.
  std::string key;
  PropertyListDictionary entry;

  [[nodiscard]] static FeedbackContent contentOfValue(const DonationValue& value);
  [[nodiscard]] static std::string keyOfValue(const Value& value);
  // The value of an entry read from a file, without a label; nothing when it describes no content.
  [[nodiscard]] static std::optional<Value> valueOfEntry(const PropertyListDictionary& entry);
};

}  // namespace quenlet
