#include "platform/donations/ContactWire.h"

#include <array>
#include <utility>

#include "platform/contacts/PersonNameComponents.h"
#include "platform/ipc/ErrorWire.h"
#include "platform/ipc/ServiceInterface.h"

namespace quenlet {
namespace {

constexpr char emailAddressesKey[] = "emailAddresses";
constexpr char phoneNumbersKey[] = "phoneNumbers";
constexpr char postalAddressesKey[] = "postalAddresses";
constexpr char imageDataKey[] = "imageData";
constexpr char labelKey[] = "label";
constexpr char valueKey[] = "value";

using TextField = std::pair<const char*, std::string ContactFields::*>;
constexpr std::array<TextField, 6> textFields = {{
    {NamePrefixKey, &ContactFields::namePrefix},
    {GivenNameKey, &ContactFields::givenName},
    {MiddleNameKey, &ContactFields::middleName},
    {FamilyNameKey, &ContactFields::familyName},
    {NameSuffixKey, &ContactFields::nameSuffix},
    {NicknameKey, &ContactFields::nickname},
}};

PropertyList valueOf(const std::string& emailAddress) { return emailAddress; }
PropertyList valueOf(const PhoneNumber& number) { return number.stringValue(); }
PropertyList valueOf(const PostalAddress& address) { return address.dictionaryRepresentation(); }

std::optional<std::string> readValue(const PropertyList& value, const std::string*) {
  if (!value.string()) return std::nullopt;
  return *value.string();
}

std::optional<PhoneNumber> readValue(const PropertyList& value, const PhoneNumber*) {
  if (!value.string()) return std::nullopt;
  return PhoneNumber::withStringValue(*value.string());
}

std::optional<PostalAddress> readValue(const PropertyList& value, const PostalAddress*) {
  if (!value.dictionary()) return std::nullopt;
  if (value.dictionary()->empty()) return PostalAddress{};
  return PostalAddress::postalAddressWithDictionaryRepresentation(*value.dictionary());
}

template <typename T>
void encodeEntries(WireEncoder& encoder, const char* key, const LabeledValues<T>& entries) {
  if (entries.empty()) return;
  encoder.string(key).list(entries.size());
  for (const auto& entry : entries) {
    const ValueOrigin* origin = entry->storeInfo.valueOrigin.get();
    encoder.dictionary(origin ? 3 : 2);
    encoder.string(labelKey).string(entry->label);
    encoder.string(valueKey).propertyList(valueOf(entry->value));
    if (origin) encoder.string(ValueOriginKey).propertyList(origin->dictionaryRepresentation());
  }
}

template <typename T>
std::shared_ptr<const LabeledValue<T>> decodeEntry(const PropertyList& element) {
  const PropertyListDictionary* fields = element.dictionary();
  const std::string* label = fields ? findString(*fields, labelKey) : nullptr;
  const PropertyList* value = fields ? findEntry(*fields, valueKey) : nullptr;
  if (!label || !value) return nullptr;
  std::optional<T> read = readValue(*value, static_cast<const T*>(nullptr));
  if (!read) return nullptr;
  StoreInfo storeInfo;
  if (const PropertyList* origin = findEntry(*fields, ValueOriginKey)) {
    if (!origin->dictionary()) return nullptr;
    std::optional<ValueOrigin> readOrigin =
        ValueOrigin::originWithDictionary(*origin->dictionary());
    if (!readOrigin) return nullptr;
    storeInfo.valueOrigin = std::make_shared<const ValueOrigin>(std::move(*readOrigin));
  }
  return std::make_shared<const LabeledValue<T>>(
      LabeledValue<T>{*label, std::move(*read), std::move(storeInfo)});
}

// Whether the list under `key` could be read; a missing one is empty.
template <typename T>
bool decodeEntries(const PropertyListDictionary& content, const char* key,
                   LabeledValues<T>& entries) {
  const PropertyList* list = findEntry(content, key);
  if (!list) return true;
  if (!list->array()) return false;
  for (const PropertyList& element : *list->array()) {
    auto entry = decodeEntry<T>(element);
    if (!entry) return false;
    entries.append(std::move(entry));
  }
  return true;
}

std::shared_ptr<const Contact> contactWithContent(const PropertyListDictionary& content) {
  ContactFields fields;
  for (const auto& [key, field] : textFields) {
    const PropertyList* text = findEntry(content, key);
    if (!text) continue;
    if (!text->string()) return nullptr;
    fields.*field = *text->string();
  }
  if (!decodeEntries(content, emailAddressesKey, fields.emailAddresses) ||
      !decodeEntries(content, phoneNumbersKey, fields.phoneNumbers) ||
      !decodeEntries(content, postalAddressesKey, fields.postalAddresses)) {
    return nullptr;
  }
  if (const PropertyList* image = findEntry(content, imageDataKey)) {
    if (!image->data()) return nullptr;
    fields.imageData = std::make_shared<const std::string>(image->data()->bytes);
  }
  return std::make_shared<const Contact>(std::move(fields));
}

// How many fields of the contact are written.
std::size_t countFields(const Contact& contact) {
  std::size_t count = 0;
  for (const std::string* text :
       {&contact.namePrefix(), &contact.givenName(), &contact.middleName(), &contact.familyName(),
        &contact.nameSuffix(), &contact.nickname()}) {
    if (!text->empty()) ++count;
  }
  if (!contact.emailAddresses().empty()) ++count;
  if (!contact.phoneNumbers().empty()) ++count;
  if (!contact.postalAddresses().empty()) ++count;
  if (contact.imageData()) ++count;
  return count;
}

void encodeText(WireEncoder& encoder, const char* key, const std::string& text) {
  if (!text.empty()) encoder.string(key).string(text);
}

}  // namespace

void ContactWire::encode(WireEncoder& encoder, const Contact& contact) {
  encoder.object(className).dictionary(countFields(contact));
  encodeText(encoder, NamePrefixKey, contact.namePrefix());
  encodeText(encoder, GivenNameKey, contact.givenName());
  encodeText(encoder, MiddleNameKey, contact.middleName());
  encodeText(encoder, FamilyNameKey, contact.familyName());
  encodeText(encoder, NameSuffixKey, contact.nameSuffix());
  encodeText(encoder, NicknameKey, contact.nickname());
  encodeEntries(encoder, emailAddressesKey, contact.emailAddresses());
  encodeEntries(encoder, phoneNumbersKey, contact.phoneNumbers());
  encodeEntries(encoder, postalAddressesKey, contact.postalAddresses());
  if (contact.imageData()) encoder.string(imageDataKey).data(*contact.imageData());
}

std::shared_ptr<const Contact> ContactWire::decode(WireReader& reader) {
  if (reader.nextType() != WireType::object) {
    reader.skip();
    return nullptr;
  }
  const bool isContact = reader.object() == className;
  const std::optional<PropertyList> content = reader.propertyList();
  if (!isContact || !content || !content->dictionary()) return nullptr;
  return contactWithContent(*content->dictionary());
}

void ContactWire::encodeEither(WireEncoder& encoder,
                               const Result<std::shared_ptr<const Contact>>& contactOrError) {
  encoder.object(eitherClassName);
  if (contactOrError.isLeft()) {
    encode(encoder, *contactOrError.left());
  } else {
    ErrorWire::encode(encoder, contactOrError.right());
  }
}

Result<std::shared_ptr<const Contact>> ContactWire::decodeEither(WireReader& reader) {
  using Outcome = Result<std::shared_ptr<const Contact>>;
  const auto malformed = [] {
    return makeServiceError(ServiceErrorCode::malformedMessage, "no contact and no error");
  };
  if (reader.object() != eitherClassName || reader.nextType() != WireType::object) {
    return Outcome::right(malformed());
  }
  WireReader content(reader.skip());
  WireReader contentAsContact = content;
  if (auto contact = decode(contentAsContact)) return Outcome::left(std::move(contact));
  const ErrorPtr error = ErrorWire::decode(content);
  return Outcome::right(error ? error : malformed());
}

}  // namespace quenlet
