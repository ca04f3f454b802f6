// The property-list form of a donation record, as it stands in the donations file and on the wire:
// one key for the content (with "label" and "style" beside it where the kind has them) and
// "origin".

#include "model/DonationValue.h"

namespace quenlet {
namespace {

constexpr auto& imageDataKey = DonationText::imageDataKey;
constexpr auto& originKey = DonationText::originKey;
constexpr auto& styleKey = DonationText::styleKey;

// Adds the content's entries to a record's dictionary.
struct ContentWriter final {
  PropertyListDictionary& entries;

  void operator()(const PersonNameComponents& name) const {
    entries.emplace(DonationValueNameComponentsKey, name.dictionaryRepresentation());
  }
  void operator()(const Value::EmailAddress& email) const {
    entries.emplace(DonationValueEmailAddressKey, email.address);
    entries.emplace(DonationValueLabelKey, email.label);
  }
  void operator()(const Value::PhoneNumber& phone) const {
    entries.emplace(DonationValuePhoneNumberKey, phone.number);
    entries.emplace(DonationValueLabelKey, phone.label);
  }
  void operator()(const Value::PostalAddress& postal) const {
    entries.emplace(DonationValuePostalAddressKey, postal.address.dictionaryRepresentation());
    entries.emplace(styleKey, static_cast<std::int64_t>(postal.style));
    entries.emplace(DonationValueLabelKey, postal.label);
  }
  void operator()(const Value::ImageData& image) const {
    entries.emplace(imageDataKey, Data{*image.bytes});
  }
};

DonationValuePtr nameRecord(const PropertyList& content, DonationOrigin origin) {
  const PropertyListDictionary* components = content.dictionary();
  if (!components) return nullptr;
  for (const auto& [key, component] : *components) {
    if (!component.string()) return nullptr;
  }
  return DonationValue::donationValueWithNameComponents(
      PersonNameComponents::componentsWithDictionary(*components), std::move(origin));
}

DonationValuePtr emailRecord(const PropertyList& content, const std::string* label,
                             DonationOrigin origin) {
  if (!content.string() || !label) return nullptr;
  return DonationValue::donationValueWithEmailAddress(*content.string(), *label, std::move(origin));
}

DonationValuePtr phoneRecord(const PropertyList& content, const std::string* label,
                             DonationOrigin origin) {
  if (!content.string() || !label) return nullptr;
  std::optional<PhoneNumber> number = PhoneNumber::withStringValue(*content.string());
  if (!number) return nullptr;
  return DonationValue::donationValueWithPhoneNumber(*number, *label, std::move(origin));
}

DonationValuePtr postalRecord(const PropertyList& content, const std::string* label,
                              const PropertyList* style, DonationOrigin origin) {
  if (!content.dictionary() || !label || !style || !style->integer()) return nullptr;
  // An address without fields is written as an empty dictionary, and is read back as one.
  std::optional<PostalAddress> address;
  if (content.dictionary()->empty()) {
    address.emplace();
  } else {
    address = PostalAddress::postalAddressWithDictionaryRepresentation(*content.dictionary());
  }
  if (!address) return nullptr;
  return DonationValue::donationValueWithPostalAddress(
      std::move(*address), static_cast<PostalAddressStyle>(*style->integer()), *label,
      std::move(origin));
}

}  // namespace

PropertyListDictionary DonationValue::propertyListRepresentation() const {
  const DecodedDonation donation = decoded();
  PropertyListDictionary entries;
  std::visit(ContentWriter{entries}, donation.content);
  entries.emplace(originKey, donation.origin.dictionaryRepresentation());
  return entries;
}

DonationValuePtr DonationValue::initWithPropertyListRepresentation(
    const PropertyListDictionary& entries) {
  const PropertyListDictionary* originEntries = findDictionary(entries, originKey);
  if (!originEntries) return nullptr;
  std::optional<DonationOrigin> origin = DonationOrigin::originWithDictionary(*originEntries);
  const PropertyList* name = findEntry(entries, DonationValueNameComponentsKey);
  const PropertyList* email = findEntry(entries, DonationValueEmailAddressKey);
  const PropertyList* phone = findEntry(entries, DonationValuePhoneNumberKey);
  const PropertyList* postal = findEntry(entries, DonationValuePostalAddressKey);
  const PropertyList* image = findEntry(entries, imageDataKey);
  if (!origin || !!name + !!email + !!phone + !!postal + !!image != 1) return nullptr;

  const std::string* label = findString(entries, DonationValueLabelKey);
  if (name) return nameRecord(*name, std::move(*origin));
  if (email) return emailRecord(*email, label, std::move(*origin));
  if (phone) return phoneRecord(*phone, label, std::move(*origin));
  if (postal) {
    return postalRecord(*postal, label, findEntry(entries, styleKey), std::move(*origin));
  }
  if (!image->data()) return nullptr;
  return donationValueWithImageData(image->data()->bytes, std::move(*origin));
}

}  // namespace quenlet
