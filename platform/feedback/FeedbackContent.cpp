#include "platform/feedback/FeedbackContent.h"

#include <string_view>
#include <utility>

#include "platform/contacts/EmailAddress.h"
#include "platform/foundation/Text.h"

namespace quenlet {
namespace {

constexpr char imageDataKey[] = "imageData";

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

class ContentVisitor final : public DonationValueVisitor {
 public:
  FeedbackContent content;

  void visitDonationValue(const DonationValue&, const PersonNameComponents& name) override {
    content = {keyOfName(name),
               {{DonationValueNameComponentsKey, name.dictionaryRepresentation()}}};
  }
  void visitDonationValue(const DonationValue&, const std::string& emailAddress,
                          const std::string&) override {
    content = {keyOfEmailAddress(emailAddress), {{DonationValueEmailAddressKey, emailAddress}}};
  }
  void visitDonationValue(const DonationValue&, const PhoneNumber& number,
                          const std::string&) override {
    content = {keyOfPhoneNumber(number), {{DonationValuePhoneNumberKey, number.stringValue()}}};
  }
  void visitDonationValue(const DonationValue&, const PostalAddress& address, PostalAddressStyle,
                          const std::string&) override {
    content = {keyOfPostalAddress(address),
               {{DonationValuePostalAddressKey, address.dictionaryRepresentation()}}};
  }
  void visitDonationValue(const DonationValue&,
                          const std::shared_ptr<const std::string>& bytes) override {
    content = {keyOfImage(*bytes), {{imageDataKey, Data{*bytes}}}};
  }
};

}  // namespace

FeedbackContent FeedbackContent::contentOfValue(const DonationValue& value) {
  ContentVisitor visitor;
  value.acceptDonationValueVisitor(visitor);
  return std::move(visitor.content);
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
