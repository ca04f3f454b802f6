#include "model/DonationBounds.h"

#include <algorithm>
#include <string_view>

#include "model/DonationRecord.h"
#include "platform/contacts/ValueBounds.h"

namespace quenlet {
namespace {

using Violation = std::optional<std::string>;

bool isTextKey(std::string_view key) {
  const auto isKey = [key](const auto& entry) { return entry.first == key; };
  return std::ranges::any_of(nameComponentsByKey, isKey) || PostalAddress::fieldForKey(key) ||
         key == DonationValueEmailAddressKey || key == DonationValuePhoneNumberKey ||
         key == DonationValueLabelKey || key == DonationOrigin::bundleIdentifierKey ||
         key == DonationOrigin::donationIdentifierKey ||
         key == DonationOrigin::clusterIdentifierKey;
}

Violation violationOfEntry(const std::string& key, const PropertyList& entry) {
  const std::string* text = isTextKey(key) ? entry.string() : nullptr;
  const Data* image = key == DonationValueImageDataKey ? entry.data() : nullptr;
  const bool mayBeEmpty =
      key != DonationOrigin::bundleIdentifierKey && key != DonationOrigin::donationIdentifierKey;
  if (text && text->size() > mostBytesInText) {
    return key + " is larger than " + std::to_string(mostBytesInText >> 10) + " KiB";
  }
  if (image && image->bytes.size() > mostBytesInImage) {
    return key + " is larger than " + std::to_string(mostBytesInImage >> 20) + " MiB";
  }
  return text && text->empty() && !mayBeEmpty ? Violation(key + " is empty") : std::nullopt;
}

}  // namespace

Violation DonationBounds::violation(const PropertyListDictionary& record) {
  for (const auto& [key, entry] : record) {
    // Names, postal addresses and origins are dictionaries of their own.
    const PropertyListDictionary* parts = entry.dictionary();
    if (parts == nullptr) {
      if (Violation found = violationOfEntry(key, entry)) return found;
      continue;
    }
    for (const auto& [partKey, part] : *parts) {
      if (Violation found = violationOfEntry(partKey, part)) return found;
    }
  }
  return std::nullopt;
}

}  // namespace quenlet
