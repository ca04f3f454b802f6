#include "model/DonationRecord.h"

#include <utility>

#include "platform/contacts/PhoneNumber.h"
#include "platform/foundation/PropertyListScanner.h"
#include "platform/foundation/PropertyListWriter.h"

namespace quenlet {
namespace {

// What a record holds under its keys, in ascending order of them.
struct Fields final {
  std::optional<std::string> emailAddress;
  std::optional<std::string> imageData;
  std::optional<std::string> label;
  std::optional<PersonNameComponents> nameComponents;
  std::optional<DonationOrigin> origin;
  std::optional<std::string> phoneNumber;
  std::optional<PostalAddress> postalAddress;
  std::optional<std::int64_t> style;

  // Whether the kind of content, if there is one, comes with a label.
  [[nodiscard]] bool needLabel() const { return emailAddress || phoneNumber || postalAddress; }
  // The donation that they make up: one content with what belongs to it and nothing else.
  [[nodiscard]] std::optional<DecodedDonation> takeDonation();

 private:
  [[nodiscard]] Value::Cases takeContent();
};

std::optional<DecodedDonation> Fields::takeDonation() {
  const int contents = emailAddress.has_value() + imageData.has_value() +
                       nameComponents.has_value() + phoneNumber.has_value() +
                       postalAddress.has_value();
  if (contents != 1 || !origin || label.has_value() != needLabel() ||
      style.has_value() != postalAddress.has_value() ||
      (phoneNumber && !PhoneNumber::isNumber(*phoneNumber))) {
    return std::nullopt;
  }
  return DecodedDonation{takeContent(), *std::move(origin)};
}

Value::Cases Fields::takeContent() {
  if (emailAddress) return Value::EmailAddress{*std::move(emailAddress), *std::move(label)};
  if (phoneNumber) return Value::PhoneNumber{*std::move(phoneNumber), *std::move(label)};
  if (nameComponents) return *std::move(nameComponents);
  if (postalAddress) {
    return Value::PostalAddress{*std::move(postalAddress), static_cast<PostalAddressStyle>(*style),
                                *std::move(label)};
  }
  return Value::ImageData{std::make_shared<const std::string>(*std::move(imageData))};
}

// Sets `owner` to a dictionary of texts, each in the member that `members` gives for its key.
template <typename Owner, typename Members>
void takeTexts(PropertyListScanner& record, std::string_view key, const Members& members,
               std::optional<Owner>& owner) {
  if (!record.beginDictionary(key)) return;
  owner.emplace();
  for (const auto& [textKey, member] : members) {
    if (auto text = record.string(textKey)) (*owner).*member = *std::move(text);
  }
  if (!record.endDictionary()) owner.reset();
}

std::optional<DonationOrigin> takeOrigin(PropertyListScanner& record) {
  if (!record.beginDictionary(DonationValueOriginKey)) return std::nullopt;
  std::optional<std::string> bundle = record.string(DonationOrigin::bundleIdentifierKey);
  std::optional<std::string> cluster = record.string(DonationOrigin::clusterIdentifierKey);
  const std::optional<double> donated = record.real(DonationOrigin::donationDateKey);
  std::optional<std::string> donation = record.string(DonationOrigin::donationIdentifierKey);
  const std::optional<double> expires = record.real(DonationOrigin::expirationDateKey);
  if (!bundle || bundle->empty() || !donated || !donation || donation->empty() || !expires ||
      !record.endDictionary()) {
    return std::nullopt;
  }
  return DonationOrigin(*std::move(bundle), *std::move(donation), std::move(cluster),
                        Date(*donated), Date(*expires));
}

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
    entries.emplace(DonationValueStyleKey, static_cast<std::int64_t>(postal.style));
    entries.emplace(DonationValueLabelKey, postal.label);
  }
  void operator()(const Value::ImageData& image) const {
    entries.emplace(DonationValueImageDataKey, Data{*image.bytes});
  }
};

std::optional<std::string> copyOf(const std::string* text) {
  return text ? std::optional(*text) : std::nullopt;
}

// An address without fields is written as an empty dictionary, and is read back as one.
std::optional<PostalAddress> readAddress(const PropertyListDictionary& fields) {
  if (fields.empty()) return PostalAddress();
  return PostalAddress::postalAddressWithDictionaryRepresentation(fields);
}

// Sets the content that stands under its key, and what belongs to it.
void readContent(const PropertyListDictionary& entries, Fields& fields) {
  fields.emailAddress = copyOf(findString(entries, DonationValueEmailAddressKey));
  fields.phoneNumber = copyOf(findString(entries, DonationValuePhoneNumberKey));
  if (const auto* name = findStringDictionary(entries, DonationValueNameComponentsKey)) {
    fields.nameComponents = PersonNameComponents::componentsWithDictionary(*name);
  }
  if (const auto* address = findDictionary(entries, DonationValuePostalAddressKey)) {
    fields.postalAddress = readAddress(*address);
  }
  const PropertyList* image = findEntry(entries, DonationValueImageDataKey);
  if (image && image->data()) fields.imageData = image->data()->bytes;
  if (fields.needLabel()) fields.label = copyOf(findString(entries, DonationValueLabelKey));
  const PropertyList* style = findEntry(entries, DonationValueStyleKey);
  if (fields.postalAddress && style && style->integer()) fields.style = *style->integer();
}

}  // namespace

PropertyListDictionary DecodedDonation::dictionaryRepresentation() const {
  PropertyListDictionary entries;
  std::visit(ContentWriter{entries}, content);
  entries.emplace(DonationValueOriginKey, origin.dictionaryRepresentation());
  return entries;
}

std::optional<DecodedDonation> DecodedDonation::donationWithDictionary(
    const PropertyListDictionary& entries) {
  int contents = 0;
  for (const char* key :
       {DonationValueNameComponentsKey, DonationValueEmailAddressKey, DonationValuePhoneNumberKey,
        DonationValuePostalAddressKey, DonationValueImageDataKey}) {
    contents += entries.contains(key);
  }
  if (contents != 1) return std::nullopt;
  Fields fields;
  readContent(entries, fields);
  if (const auto* origin = findDictionary(entries, DonationValueOriginKey)) {
    fields.origin = DonationOrigin::originWithDictionary(*origin);
  }
  return fields.takeDonation();
}

std::optional<std::string> DecodedDonation::textRepresentation() const {
  if (origin.bundleIdentifier.empty() || origin.donationIdentifier.empty()) return std::nullopt;
  PropertyListWriter writer;
  writer.value(dictionaryRepresentation());
  Result<std::string> text = std::move(writer).takeText();
  return text.ok() ? std::optional(std::move(text).takeValue()) : std::nullopt;
}

std::optional<DecodedDonation> DecodedDonation::takeFromTexts(std::string_view& texts) {
  PropertyListScanner record(texts);
  Fields fields;
  if (!record.beginDictionary()) return std::nullopt;
  fields.emailAddress = record.string(DonationValueEmailAddressKey);
  fields.imageData = record.data(DonationValueImageDataKey);
  fields.label = record.string(DonationValueLabelKey);
  takeTexts(record, DonationValueNameComponentsKey, nameComponentsByKey, fields.nameComponents);
  fields.origin = takeOrigin(record);
  fields.phoneNumber = record.string(DonationValuePhoneNumberKey);
  takeTexts(record, DonationValuePostalAddressKey, postalFieldsByKey, fields.postalAddress);
  fields.style = record.integer(DonationValueStyleKey);
  return record.endDictionary() ? fields.takeDonation() : std::nullopt;
}

}  // namespace quenlet
