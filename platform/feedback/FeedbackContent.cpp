#include "platform/feedback/FeedbackContent.h"

#include <string_view>
#include <utility>

#include "platform/contacts/EmailAddress.h"
#include "platform/foundation/Text.h"

namespace quenlet {
namespace {

constexpr auto& imageDataKey = DonationText::imageDataKey;

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

std::string keyOfPostalAddress(const PostalAddress& address) {
  std::string key = "a";
  for (const std::string* field :
       {&address.street, &address.subLocality, &address.city, &address.subAdministrativeArea,
        &address.state, &address.postalCode, &address.country, &address.isoCountryCode}) {
    appendField(key, *field);
  }
  return key;
}

std::string keyOfImage(std::string_view bytes) { return "i" + std::string(bytes); }

struct ContentOf final {
  FeedbackContent operator()(const PersonNameComponents& name) const {
    return {keyOfName(name), {{DonationValueNameComponentsKey, name.dictionaryRepresentation()}}};
  }
  FeedbackContent operator()(const Value::EmailAddress& email) const {
    return {keyOfEmailAddress(email.address), {{DonationValueEmailAddressKey, email.address}}};
  }
  FeedbackContent operator()(const Value::PhoneNumber& phone) const {
    return {keyOfPhoneNumber(*PhoneNumber::withStringValue(phone.number)),
            {{DonationValuePhoneNumberKey, phone.number}}};
  }
  FeedbackContent operator()(const Value::PostalAddress& postal) const {
    return {keyOfPostalAddress(postal.address),
            {{DonationValuePostalAddressKey, postal.address.dictionaryRepresentation()}}};
  }
  FeedbackContent operator()(const Value::ImageData& image) const {
    return {keyOfImage(*image.bytes), {{imageDataKey, Data{*image.bytes}}}};
  }
};

}  // namespace

FeedbackContent FeedbackContent::contentOfValue(const DonationValue& value) {
  return std::visit(ContentOf{}, value.decoded().content);
}

std::optional<std::string> FeedbackContent::keyOfEntry(const PropertyListDictionary& entry) {
  if (const auto* name = findDictionary(entry, DonationValueNameComponentsKey)) {
    return keyOfName(PersonNameComponents::componentsWithDictionary(*name));
  }
  if (const std::string* address = findString(entry, DonationValueEmailAddressKey)) {
    return keyOfEmailAddress(*address);
  }
  if (const std::string* text = findString(entry, DonationValuePhoneNumberKey)) {
    const std::optional<PhoneNumber> number = PhoneNumber::withStringValue(*text);
    return number ? std::optional(keyOfPhoneNumber(*number)) : std::nullopt;
  }
  if (const auto* fields = findDictionary(entry, DonationValuePostalAddressKey)) {
    if (fields->empty()) return keyOfPostalAddress(PostalAddress());
    const auto address = PostalAddress::postalAddressWithDictionaryRepresentation(*fields);
    return address ? std::optional(keyOfPostalAddress(*address)) : std::nullopt;
  }
  const PropertyList* image = findEntry(entry, imageDataKey);
  if (!image || !image->data()) return std::nullopt;
  return keyOfImage(image->data()->bytes);
}

}  // namespace quenlet
