#include "model/DonationBounds.h"

#include <algorithm>
#include <string_view>

#include "model/DonationText.h"

namespace quenlet {
namespace {

bool isTextField(std::string_view field) {
  const auto isKey = [field](const auto& entry) { return entry.first == field; };
  const std::string_view others[] = {DonationValueEmailAddressKey,
                                     DonationValuePhoneNumberKey,
                                     DonationValueLabelKey,
                                     DonationOrigin::bundleIdentifierKey,
                                     DonationOrigin::donationIdentifierKey,
                                     DonationOrigin::clusterIdentifierKey};
  return std::any_of(nameComponentsByKey.begin(), nameComponentsByKey.end(), isKey) ||
         std::any_of(postalFieldsByKey.begin(), postalFieldsByKey.end(), isKey) ||
         std::find(std::begin(others), std::end(others), field) != std::end(others);
}

std::optional<std::string> violationOfText(const std::string& field, const std::string& text) {
  if (!isTextField(field)) return std::nullopt;
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
  const Data* image = field == DonationText::imageDataKey ? entry.data() : nullptr;
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
