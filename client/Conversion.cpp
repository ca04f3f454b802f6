#include "client/Conversion.h"

#include <utility>

#include "platform/foundation/PropertyListSerializer.h"
#include "platform/ipc/ServiceInterface.h"

namespace quenlet {
namespace {

using Record = Result<DonationValuePtr>;

ErrorPtr invalid(std::string sentence) {
  return makeServiceError(ServiceErrorCode::invalidArguments, std::move(sentence));
}

// Corresponding fields, for both directions.
using Component = std::optional<std::string>;
constexpr std::pair<Component Name::*, Component PersonNameComponents::*> nameFields[] = {
    {&Name::namePrefix, &PersonNameComponents::namePrefix},
    {&Name::givenName, &PersonNameComponents::givenName},
    {&Name::middleName, &PersonNameComponents::middleName},
    {&Name::familyName, &PersonNameComponents::familyName},
    {&Name::nameSuffix, &PersonNameComponents::nameSuffix},
    {&Name::nickname, &PersonNameComponents::nickname}};
constexpr std::pair<std::string Address::*, PostalAddress::Field> addressFields[] = {
    {&Address::street, &PostalAddress::street},
    {&Address::subLocality, &PostalAddress::subLocality},
    {&Address::city, &PostalAddress::city},
    {&Address::subAdministrativeArea, &PostalAddress::subAdministrativeArea},
    {&Address::state, &PostalAddress::state},
    {&Address::postalCode, &PostalAddress::postalCode},
    {&Address::country, &PostalAddress::country},
    {&Address::isoCountryCode, &PostalAddress::isoCountryCode}};

PersonNameComponents componentsOf(Name&& name) {
  PersonNameComponents components;
  for (const auto& [field, own] : nameFields) components.*own = std::move(name.*field);
  return components;
}

PostalAddress addressOf(Address&& address) {
  PostalAddress converted;
  for (const auto& [field, own] : addressFields) converted.*own = std::move(address.*field);
  return converted;
}

// Makes the record of each kind of content.
struct RecordMaker final {
  DonationOrigin origin;

  Record operator()(Name&& name) {
    return Record::success(DonationValue::donationValueWithNameComponents(
        componentsOf(std::move(name)), std::move(origin)));
  }
  Record operator()(Email&& email) {
    return Record::success(DonationValue::donationValueWithEmailAddress(
        std::move(email.address), std::move(email.label), std::move(origin)));
  }
  Record operator()(Phone&& phone) {
    const std::optional<PhoneNumber> number = PhoneNumber::withStringValue(phone.number);
    if (!number) {
      return Record::failure(invalid("it holds no phone number"));
    }
    return Record::success(DonationValue::donationValueWithPhoneNumber(
        *number, std::move(phone.label), std::move(origin)));
  }
  Record operator()(Postal&& postal) {
    return Record::success(DonationValue::donationValueWithPostalAddress(
        addressOf(std::move(postal.address)), static_cast<PostalAddressStyle>(postal.style),
        std::move(postal.label), std::move(origin)));
  }
  Record operator()(Image&& image) {
    return Record::success(
        DonationValue::donationValueWithImageData(std::move(image.bytes), std::move(origin)));
  }
};

// Makes the public content of each kind.
struct ContentMaker final {
  using Content = decltype(Donation::content);

  Content operator()(const PersonNameComponents& name) const { return Conversion::name(name); }
  Content operator()(const Value::EmailAddress& email) const {
    return Email{email.address, email.label};
  }
  Content operator()(const Value::PhoneNumber& phone) const {
    return Phone{phone.number, phone.label};
  }
  Content operator()(const Value::PostalAddress& postal) const {
    return Postal{Conversion::address(postal.address), static_cast<AddressStyle>(postal.style),
                  postal.label};
  }
  Content operator()(const Value::ImageData& image) const { return Image{*image.bytes}; }
};

std::string publicValue(const std::string& emailAddress) { return emailAddress; }
std::string publicValue(const PhoneNumber& number) { return number.stringValue(); }
Address publicValue(const PostalAddress& address) { return Conversion::address(address); }

template <typename T, typename Public>
void convertEntries(const LabeledValues<T>& entries, std::vector<CardEntry<Public>>& converted) {
  converted.reserve(entries.size());
  for (const auto& entry : entries) {
    CardEntry<Public>& added =
        converted.emplace_back(CardEntry<Public>{publicValue(entry->value), entry->label});
    if (const ValueOrigin* origin = entry->storeInfo.valueOrigin.get()) {
      added.source = {origin->bundleIdentifier, origin->donationIdentifier,
                      origin->clusterIdentifier, origin->donationDate, origin->expirationDate};
    }
  }
}

Result<PropertyListDictionary> propertiesOf(AccountRecord& record) {
  using Properties = Result<PropertyListDictionary>;
  PropertyListDictionary properties;
  if (!record.propertyList.empty()) {
    const Result<PropertyList> read = PropertyListSerializer::objectWithData(record.propertyList);
    if (!read.ok()) return Properties::failure(read.error());
    if (!read.value().dictionary()) {
      return Properties::failure(invalid("an account's properties are not a dictionary"));
    }
    properties = *read.value().dictionary();
  }
  for (auto& [key, text] : record.textProperties) {
    properties.insert_or_assign(key, std::move(text));
  }
  return Properties::success(std::move(properties));
}

}  // namespace

Result<DonationValuePtr> Conversion::donationValue(Donation donation) {
  return std::visit(
      RecordMaker{{std::move(donation.bundleIdentifier), std::move(donation.donationIdentifier),
                   std::move(donation.clusterIdentifier), donation.donationDate,
                   donation.expirationDate}},
      std::move(donation.content));
}

Result<DonationValues> Conversion::donationValues(std::vector<Donation> donations) {
  DonationValues values;
  values.reserve(donations.size());
  for (Donation& donation : donations) {
    Record value = donationValue(std::move(donation));
    if (!value.ok()) {
      // By its place, not its identifier: donors make identifiers of what they like.
      return Result<DonationValues>::failure(invalid("donation " +
                                                     std::to_string(values.size() + 1) + ": " +
                                                     value.error()->debugDescription()));
    }
    values.push_back(std::move(value).takeValue());
  }
  return Result<DonationValues>::success(std::move(values));
}

Donation Conversion::donation(const DonationValue& value) {
  DecodedDonation decoded = value.decoded();
  DonationOrigin& origin = decoded.origin;
  return {std::visit(ContentMaker(), decoded.content),
          std::move(origin.bundleIdentifier),
          std::move(origin.donationIdentifier),
          std::move(origin.clusterIdentifier),
          origin.donationDate,
          origin.expirationDate};
}

std::vector<Donation> Conversion::donations(const DonationValues& values) {
  std::vector<Donation> converted;
  converted.reserve(values.size());
  for (const DonationValuePtr& value : values) converted.push_back(donation(*value));
  return converted;
}

Name Conversion::name(const PersonNameComponents& components) {
  Name name;
  for (const auto& [field, own] : nameFields) name.*field = components.*own;
  return name;
}

Address Conversion::address(const PostalAddress& address) {
  Address converted;
  for (const auto& [field, own] : addressFields) converted.*field = address.*own;
  return converted;
}

Card Conversion::card(const Contact& contact) {
  Card card{.name = name(PersonNameComponents::componentsForContact(contact))};
  convertEntries(contact.emailAddresses(), card.emailAddresses);
  convertEntries(contact.phoneNumbers(), card.phoneNumbers);
  convertEntries(contact.postalAddresses(), card.postalAddresses);
  if (contact.imageData()) card.image = Image{*contact.imageData()};
  return card;
}

Result<AccountPtr> Conversion::account(std::optional<AccountRecord> record) {
  using Outcome = Result<AccountPtr>;
  if (!record) return Outcome::success(nullptr);
  if (record->identifier.empty()) return Outcome::failure(invalid("an account has no identifier"));
  Result<PropertyListDictionary> properties = propertiesOf(*record);
  if (!properties.ok()) return Outcome::failure(properties.error());
  Account account{.identifier = std::move(record->identifier),
                  .username = std::move(record->username),
                  .isActive = record->isActive,
                  .enabledDataclasses = std::move(record->dataClasses),
                  .properties = std::move(properties).takeValue()};
  if (record->type) account.accountType = AccountType{std::move(record->type)};
  return Outcome::success(std::make_shared<const Account>(std::move(account)));
}

}  // namespace quenlet
