#include "facade/ValueForm.h"

#include <algorithm>
#include <iterator>
#include <optional>
#include <utility>

#include "facade/FacadeError.h"
#include "platform/contacts/ValueBounds.h"
#include "platform/foundation/Text.h"

namespace quenlet {
namespace {

using NameField = std::pair<std::string_view, std::optional<std::string> Name::*>;
constexpr NameField nameFields[] = {
    {"namePrefix", &Name::namePrefix}, {"givenName", &Name::givenName},
    {"middleName", &Name::middleName}, {"familyName", &Name::familyName},
    {"nameSuffix", &Name::nameSuffix}, {"nickname", &Name::nickname}};
using AddressField = std::pair<std::string_view, std::string Address::*>;
constexpr AddressField addressFields[] = {
    {"street", &Address::street},   {"subLocality", &Address::subLocality},
    {"city", &Address::city},       {"subAdministrativeArea", &Address::subAdministrativeArea},
    {"state", &Address::state},     {"postalCode", &Address::postalCode},
    {"country", &Address::country}, {"isoCountryCode", &Address::isoCountryCode}};

template <typename Fields, typename Value>
ErrorPtr readFields(const BusDictionary& entries, const Fields& fields, Value& value) {
  for (const auto& entry : entries) {
    const auto field =
        std::find_if(std::begin(fields), std::end(fields),
                     [&entry](const auto& known) { return known.first == entry.first; });
    const std::string* text = entry.second.text();
    if (field == std::end(fields) || text == nullptr) {
      return makeFacadeError(InvalidArgsError, "value is not one of its kind");
    }
    if (text->size() > mostBytesInText) {
      return makeFacadeError(TooLargeError, "a part of value is too long");
    }
    value.*(field->second) = *text;
  }
  return nullptr;
}

}  // namespace

std::string busText(std::string_view text) {
  if (isValidUTF8(text) && text.find('\0') == std::string_view::npos) return std::string(text);
  constexpr char32_t replacement = 0xFFFD;
  std::string valid;
  while (!text.empty()) {
    const char32_t character = takeCharacter(text).value_or(replacement);
    appendCharacter(valid, character == 0 ? replacement : character);
  }
  return valid;
}

BusDictionary nameDictionary(const Name& name) {
  BusDictionary entries;
  for (const auto& [key, field] : nameFields) {
    if (name.*field) entries.emplace(key, busText(*(name.*field)));
  }
  return entries;
}

BusDictionary addressDictionary(const Address& address) {
  BusDictionary entries;
  for (const auto& [key, field] : addressFields) {
    if (!(address.*field).empty()) entries.emplace(key, busText(address.*field));
  }
  return entries;
}

ErrorPtr readName(const BusDictionary& entries, Name& name) {
  return readFields(entries, nameFields, name);
}

ErrorPtr readAddress(const BusDictionary& entries, Address& address) {
  return readFields(entries, addressFields, address);
}

BusDictionary sourceDictionary(const DonationSource& source) {
  BusDictionary entries{{"bundleIdentifier", busText(source.bundleIdentifier)},
                        {"donationIdentifier", busText(source.donationIdentifier)},
                        {"donationDate", source.donationDate.iso8601()},
                        {"expirationDate", source.expirationDate.iso8601()}};
  if (source.clusterIdentifier != nullptr) {
    entries.emplace("clusterIdentifier", busText(*source.clusterIdentifier));
  }
  return entries;
}

}  // namespace quenlet
