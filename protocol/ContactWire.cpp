#include "protocol/ContactWire.h"

#include <array>
#include <cmath>
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

// The read() functions below read one value and return whether it is valid; if not, the reader is
// left somewhere inside that value. They build no trees: a client is waiting.

bool read(WireReader& reader, std::string& text) {
  const std::optional<std::string_view> value = reader.string();
  if (value) text = *value;
  return value.has_value();
}

bool read(WireReader& reader, std::optional<PhoneNumber>& number) {
  const std::optional<std::string_view> value = reader.string();
  number = value ? PhoneNumber::withStringValue(*value) : std::nullopt;
  return number.has_value();
}

bool read(WireReader& reader, std::shared_ptr<const std::string>& imageData) {
  const std::optional<std::string_view> value = reader.data();
  if (value) imageData = std::make_shared<const std::string>(*value);
  return value.has_value();
}

bool read(WireReader& reader, Date& date) {
  const std::optional<double> seconds = reader.real();
  if (seconds) date = Date(*seconds);
  return seconds && std::isfinite(*seconds);
}

// Skips the value of a key that this version does not know.
bool passOver(WireReader& reader) {
  reader.skip();
  return true;
}

// Reads a dictionary; `readEntry` is called with each key and reads its value.
template <typename ReadEntry>
bool readDictionary(WireReader& reader, const ReadEntry& readEntry) {
  const std::optional<std::size_t> count = reader.dictionary();
  for (std::size_t left = count.value_or(0); left > 0; --left) {
    const std::optional<std::string_view> key = reader.string();
    if (!key || !readEntry(*key)) return false;
  }
  return count.has_value();
}

bool read(WireReader& reader, PostalAddress& address) {
  return readDictionary(reader, [&](std::string_view key) {
    const PostalAddress::Field field = PostalAddress::fieldForKey(key);
    return field ? read(reader, address.*field) : passOver(reader);
  });
}

template <typename T>
bool read(WireReader& reader, std::optional<T>& value) {
  return read(reader, value.emplace());
}

bool read(WireReader& reader, std::shared_ptr<const ValueOrigin>& valueOrigin) {
  ValueOrigin origin("", "", Date(), Date());
  std::optional<Date> donated;
  std::optional<Date> expires;
  const bool isRead = readDictionary(reader, [&](std::string_view key) {
    if (key == ValueOrigin::bundleIdentifierKey) return read(reader, origin.bundleIdentifier);
    if (key == ValueOrigin::donationIdentifierKey) return read(reader, origin.donationIdentifier);
    if (key == ValueOrigin::clusterIdentifierKey) return read(reader, origin.clusterIdentifier);
    if (key == ValueOrigin::donationDateKey) return read(reader, donated);
    if (key == ValueOrigin::expirationDateKey) return read(reader, expires);
    return passOver(reader);
  });
  if (!isRead || !donated || !expires) return false;
  if (origin.bundleIdentifier.empty() || origin.donationIdentifier.empty()) return false;
  origin.donationDate = *donated;
  origin.expirationDate = *expires;
  valueOrigin = std::make_shared<const ValueOrigin>(std::move(origin));
  return true;
}

template <typename T>
bool read(WireReader& reader, std::shared_ptr<const LabeledValue<T>>& entry) {
  std::optional<std::string> label;
  std::optional<T> value;
  StoreInfo storeInfo;
  const bool isRead = readDictionary(reader, [&](std::string_view key) {
    if (key == labelKey) return read(reader, label);
    if (key == valueKey) return read(reader, value);
    if (key == ValueOriginKey) return read(reader, storeInfo.valueOrigin);
    return passOver(reader);
  });
  if (!isRead || !label || !value) return false;
  entry = std::make_shared<const LabeledValue<T>>(
      LabeledValue<T>{*std::move(label), *std::move(value), std::move(storeInfo)});
  return true;
}

template <typename T>
bool read(WireReader& reader, LabeledValues<T>& entries) {
  const std::optional<std::size_t> count = reader.list();
  entries = {};
  for (std::size_t left = count.value_or(0); left > 0; --left) {
    typename LabeledValues<T>::Entry entry;
    if (!read(reader, entry)) return false;
    entries.append(std::move(entry));
  }
  return count.has_value();
}

bool read(WireReader& reader, ContactFields& fields) {
  return readDictionary(reader, [&](std::string_view key) {
    for (const auto& [textKey, field] : textFields) {
      if (key == textKey) return read(reader, fields.*field);
    }
    if (key == emailAddressesKey) return read(reader, fields.emailAddresses);
    if (key == phoneNumbersKey) return read(reader, fields.phoneNumbers);
    if (key == postalAddressesKey) return read(reader, fields.postalAddresses);
    if (key == imageDataKey) return read(reader, fields.imageData);
    return passOver(reader);
  });
}

// The number of fields that encode() writes.
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
  // On a copy: a failed read stops inside the value, and `reader` must move past all of it.
  WireReader content = reader;
  ContactFields fields;
  if (content.nextType() == WireType::object && content.object() == className &&
      read(content, fields)) {
    reader = content;
    return std::make_shared<const Contact>(std::move(fields));
  }
  reader.skip();
  return nullptr;
}

void ContactWire::encodeEither(WireEncoder& encoder,
                               const Result<std::shared_ptr<const Contact>>& contactOrError) {
  encoder.object(eitherClassName);
  if (contactOrError.ok()) {
    encode(encoder, *contactOrError.value());
  } else {
    ErrorWire::encode(encoder, contactOrError.error());
  }
}

Result<std::shared_ptr<const Contact>> ContactWire::decodeEither(WireReader& reader) {
  using Outcome = Result<std::shared_ptr<const Contact>>;
  const auto malformed = [] {
    return makeServiceError(ServiceErrorCode::malformedMessage, "no contact and no error");
  };
  if (reader.object() != eitherClassName || reader.nextType() != WireType::object) {
    return Outcome::failure(malformed());
  }
  WireReader content = reader;
  if (auto contact = decode(reader)) return Outcome::success(std::move(contact));
  const ErrorPtr error = ErrorWire::decode(content);
  return Outcome::failure(error ? error : malformed());
}

}  // namespace quenlet
