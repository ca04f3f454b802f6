#include "model/DonationBounds.h"

#include <algorithm>
#include <string_view>

#include "model/DonationOrigin.h"
#include "model/Value.h"

namespace quenlet {
namespace {

constexpr std::string_view textFields[] = {
    NamePrefixKey,
    GivenNameKey,
    MiddleNameKey,
    FamilyNameKey,
    NameSuffixKey,
    NicknameKey,
    DonationValueEmailAddressKey,
    DonationValuePhoneNumberKey,
    "street",
    "subLocality",
    "city",
    "subAdministrativeArea",
    "state",
    "postalCode",
    "country",
    "isoCountryCode",
    DonationValueLabelKey,
    DonationOrigin::bundleIdentifierKey,
    DonationOrigin::donationIdentifierKey,
    DonationOrigin::clusterIdentifierKey,
};

std::optional<std::string> violationOfText(const std::string& field, const std::string& text) {
  if (std::find(std::begin(textFields), std::end(textFields), field) == std::end(textFields)) {
    return std::nullopt;
  }
  if (text.size() > DonationBounds::textSizeInBytes) {
    return field + " is larger than " + std::to_string(DonationBounds::textSizeInBytes >> 10) +
           " KiB";
  }
  const bool mayBeEmpty = field != DonationOrigin::bundleIdentifierKey &&
                          field != DonationOrigin::donationIdentifierKey;
  return mayBeEmpty || !text.empty() ? std::nullopt : std::optional(field + " is empty");
}

std::optional<std::string> violationOfEntry(const std::string& field, const PropertyList& entry) {
  if (const std::string* text = entry.string()) return violationOfText(field, *text);
  const Data* image = field == "imageData" ? entry.data() : nullptr;
  if (image == nullptr || image->bytes.size() <= DonationBounds::imageSizeInBytes) {
    return std::nullopt;
  }
  return field + " is larger than " + std::to_string(DonationBounds::imageSizeInBytes >> 20) +
         " MiB";
}

}  // namespace

std::optional<std::string> DonationBounds::violation(const PropertyListDictionary& record) {
  for (const auto& [field, entry] : record) {
    // Names, postal addresses and origins are dictionaries of their own.
    const PropertyListDictionary* parts = entry.dictionary();
    if (parts == nullptr) {
      if (auto found = violationOfEntry(field, entry)) return found;
      continue;
    }
    for (const auto& [part, partEntry] : *parts) {
      if (auto found = violationOfEntry(part, partEntry)) return found;
    }
  }
  return std::nullopt;
}

}  // namespace quenlet
