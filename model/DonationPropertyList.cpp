#include "model/DonationPropertyList.h"

#include <utility>

#include "platform/contacts/PhoneNumber.h"

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

using Content = std::optional<Value::Cases>;

Content readName(const PropertyList& content) {
  const PropertyListDictionary* components = content.dictionary();
  if (!components) return std::nullopt;
  for (const auto& [key, component] : *components) {
    if (!component.string()) return std::nullopt;
  }
  return PersonNameComponents::componentsWithDictionary(*components);
}

Content readEmail(const PropertyList& content, const std::string* label) {
  if (!content.string() || !label) return std::nullopt;
  return Value::EmailAddress{*content.string(), *label};
}

Content readPhone(const PropertyList& content, const std::string* label) {
  if (!content.string() || !label || !PhoneNumber::isNumber(*content.string())) return std::nullopt;
  return Value::PhoneNumber{*content.string(), *label};
}

Content readPostal(const PropertyList& content, const std::string* label,
                   const PropertyList* style) {
  if (!content.dictionary() || !label || !style || !style->integer()) return std::nullopt;
  // An address without fields is written as an empty dictionary, and is read back as one.
  std::optional<PostalAddress> address;
  if (content.dictionary()->empty()) {
    address.emplace();
  } else {
    address = PostalAddress::postalAddressWithDictionaryRepresentation(*content.dictionary());
  }
  if (!address) return std::nullopt;
  return Value::PostalAddress{*std::move(address),
                              static_cast<PostalAddressStyle>(*style->integer()), *label};
}

Content readImage(const PropertyList& content) {
  if (!content.data()) return std::nullopt;
  return Value::ImageData{std::make_shared<const std::string>(content.data()->bytes)};
}

Content readContent(const PropertyListDictionary& entries) {
  const PropertyList* name = findEntry(entries, DonationValueNameComponentsKey);
  const PropertyList* email = findEntry(entries, DonationValueEmailAddressKey);
  const PropertyList* phone = findEntry(entries, DonationValuePhoneNumberKey);
  const PropertyList* postal = findEntry(entries, DonationValuePostalAddressKey);
  const PropertyList* image = findEntry(entries, imageDataKey);
  if (!!name + !!email + !!phone + !!postal + !!image != 1) return std::nullopt;
  const std::string* label = findString(entries, DonationValueLabelKey);
  if (name) return readName(*name);
  if (email) return readEmail(*email, label);
  if (phone) return readPhone(*phone, label);
  if (postal) return readPostal(*postal, label, findEntry(entries, styleKey));
  return readImage(*image);
}

}  // namespace

PropertyListDictionary DonationPropertyList::write(const DecodedDonation& donation) {
  PropertyListDictionary entries;
  std::visit(ContentWriter{entries}, donation.content);
  entries.emplace(originKey, donation.origin.dictionaryRepresentation());
  return entries;
}

std::optional<DecodedDonation> DonationPropertyList::read(const PropertyListDictionary& entries) {
  const PropertyListDictionary* originEntries = findDictionary(entries, originKey);
  if (!originEntries) return std::nullopt;
  std::optional<DonationOrigin> origin = DonationOrigin::originWithDictionary(*originEntries);
  Content content = readContent(entries);
  if (!origin || !content) return std::nullopt;
  return DecodedDonation{*std::move(content), *std::move(origin)};
}

}  // namespace quenlet
