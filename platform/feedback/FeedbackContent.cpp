#include "platform/feedback/FeedbackContent.h"

#include <string_view>
#include <utility>

#include "platform/contacts/EmailAddress.h"
#include "platform/foundation/Text.h"

namespace quenlet {
namespace {

// A key is a letter for the kind, then the content. Fields are preceded by their length: otherwise
// ("ab", "c") and ("a", "bc") would share a key. Absent differs from empty: "-" and "0:".
void appendField(std::string& key, std::string_view text) {
  const std::string canonical = canonicalKey(text);
  key += std::to_string(canonical.size());
  key += ':';
  key += canonical;
}

std::string keyOfName(const PersonNameComponents& name) {
  std::string key = "n";
  for (const auto* component : {&name.namePrefix, &name.givenName, &name.middleName,
                                &name.familyName, &name.nameSuffix, &name.nickname}) {
    if (*component) {
      appendField(key, **component);
    } else {
      key += '-';
    }
  }
  return key;
}

std::string keyOfEmailAddress(std::string_view address) {
  return "e" + canonicalKey(EmailAddressNormalize(address));
}

std::string keyOfPhoneNumber(const PhoneNumber& number) { return "p" + number.digits(); }

std::string keyOfPostalAddress(const PostalAddress& address) { return "a" + address.key(); }

std::string keyOfImage(std::string_view bytes) { return "i" + std::string(bytes); }

struct KeyOf final {
  std::string operator()(const PersonNameComponents& name) const { return keyOfName(name); }
  std::string operator()(const Value::EmailAddress& email) const {
    return keyOfEmailAddress(email.address);
  }
  std::string operator()(const Value::PhoneNumber& phone) const {
    return keyOfPhoneNumber(*PhoneNumber::withStringValue(phone.number));
  }
  std::string operator()(const Value::PostalAddress& postal) const {
    return keyOfPostalAddress(postal.address);
  }
  std::string operator()(const Value::ImageData& image) const { return keyOfImage(*image.bytes); }
};

struct EntryOf final {
  PropertyListDictionary operator()(const PersonNameComponents& name) const {
    return {{DonationValueNameComponentsKey, name.dictionaryRepresentation()}};
  }
  PropertyListDictionary operator()(const Value::EmailAddress& email) const {
    return {{DonationValueEmailAddressKey, email.address}};
  }
  PropertyListDictionary operator()(const Value::PhoneNumber& phone) const {
    return {{DonationValuePhoneNumberKey, phone.number}};
  }
  PropertyListDictionary operator()(const Value::PostalAddress& postal) const {
    return {{DonationValuePostalAddressKey, postal.address.dictionaryRepresentation()}};
  }
  PropertyListDictionary operator()(const Value::ImageData& image) const {
    return {{DonationValueImageDataKey, Data{*image.bytes}}};
  }
};

std::optional<Value> phoneNumberOfText(const std::string& text) {
  if (!PhoneNumber::isNumber(text)) return std::nullopt;
  return Value::phoneNumber(text, {});
}

std::optional<Value> postalAddressOfFields(const PropertyListDictionary& fields) {
  auto address = fields.empty() ? std::optional(PostalAddress())
                                : PostalAddress::postalAddressWithDictionaryRepresentation(fields);
  if (!address) return std::nullopt;
  return Value::postalAddress(*std::move(address), PostalAddressStyle::mailingAddress, {});
}

}  // namespace

FeedbackContent FeedbackContent::contentOfValue(const DonationValue& value) {
  const DecodedDonation donation = value.decoded();
  return {std::visit(KeyOf{}, donation.content), std::visit(EntryOf{}, donation.content)};
}

std::string FeedbackContent::keyOfValue(const Value& value) {
  return std::visit(KeyOf{}, value.cases());
}

std::optional<Value> FeedbackContent::valueOfEntry(const PropertyListDictionary& entry) {
  if (const auto* name = findDictionary(entry, DonationValueNameComponentsKey)) {
    return Value::name(PersonNameComponents::componentsWithDictionary(*name));
  }
  if (const std::string* address = findString(entry, DonationValueEmailAddressKey)) {
    return Value::emailAddress(*address, {});
  }
  if (const std::string* text = findString(entry, DonationValuePhoneNumberKey)) {
    return phoneNumberOfText(*text);
  }
  if (const auto* fields = findDictionary(entry, DonationValuePostalAddressKey)) {
    return postalAddressOfFields(*fields);
  }
  const PropertyList* image = findEntry(entry, DonationValueImageDataKey);
  if (!image || !image->data()) return std::nullopt;
  return Value::imageData(std::make_shared<const std::string>(image->data()->bytes));
}

}  // namespace quenlet
