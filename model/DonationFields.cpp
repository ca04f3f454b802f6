#include "model/DonationFields.h"

#include <charconv>
#include <cmath>
#include <utility>

#include "platform/foundation/Base64.h"
#include "platform/foundation/XMLText.h"

namespace quenlet {
namespace {

using Texts = std::array<std::string_view, DonationFields::maximumContentFields>;

constexpr Texts nameKeys = {FamilyNameKey, GivenNameKey,  MiddleNameKey,
                            NamePrefixKey, NameSuffixKey, NicknameKey};
constexpr std::array<std::optional<std::string> PersonNameComponents::*, 6> nameComponentsByKey = {
    &PersonNameComponents::familyName, &PersonNameComponents::givenName,
    &PersonNameComponents::middleName, &PersonNameComponents::namePrefix,
    &PersonNameComponents::nameSuffix, &PersonNameComponents::nickname};

constexpr Texts postalKeys = {"city",  "country", "isoCountryCode",        "postalCode",
                              "state", "street",  "subAdministrativeArea", "subLocality"};
constexpr std::array<std::string PostalAddress::*, 8> postalFieldsByKey = {
    &PostalAddress::city,
    &PostalAddress::country,
    &PostalAddress::isoCountryCode,
    &PostalAddress::postalCode,
    &PostalAddress::state,
    &PostalAddress::street,
    &PostalAddress::subAdministrativeArea,
    &PostalAddress::subLocality};

template <typename Number>
bool parseWhole(std::string_view digits, Number& number) {
  const char* end = digits.data() + digits.size();
  const auto [stop, failure] = std::from_chars(digits.data(), end, number);
  return failure == std::errc() && stop == end;
}

}  // namespace

std::string unescapedField(std::string_view field) {
  if (field.find('&') == std::string_view::npos) return std::string(field);
  std::string text;
  static_cast<void>(appendUnescapedXML(text, field));
  return text;
}

bool DonationFields::areValid() const {
  if (!hasIdentifiers()) return false;
  if (kind == DonationKind::phoneNumber) return PhoneNumber::isNumber(unescapedField(content[0]));
  // No unescaping: base64 has no "&", so a reference makes the decoding fail.
  return kind != DonationKind::imageData || decodedBase64(content[0]).has_value();
}

PersonNameComponents DonationFields::nameComponents() const {
  PersonNameComponents components;
  for (std::size_t i = 0; i < nameComponentsByKey.size(); ++i) {
    if (content[i].data()) components.*nameComponentsByKey[i] = unescapedField(content[i]);
  }
  return components;
}

PostalAddress DonationFields::postalAddress() const {
  PostalAddress address;
  for (std::size_t i = 0; i < postalFieldsByKey.size(); ++i) {
    if (!content[i].empty()) address.*postalFieldsByKey[i] = unescapedField(content[i]);
  }
  return address;
}

DonationOrigin DonationFields::origin() const {
  DonationOrigin origin{unescapedField(bundleIdentifier), unescapedField(donationIdentifier),
                        donationDate, expirationDate};
  if (clusterIdentifier.data()) origin.clusterIdentifier = unescapedField(clusterIdentifier);
  return origin;
}

DecodedDonation DonationFields::decoded() const {
  const auto text = [this] { return unescapedField(content[0]); };
  switch (kind) {
    case DonationKind::name:
      return {nameComponents(), origin()};
    case DonationKind::emailAddress:
      return {Value::EmailAddress{text(), unescapedField(label)}, origin()};
    case DonationKind::phoneNumber:
      return {Value::PhoneNumber{text(), unescapedField(label)}, origin()};
    case DonationKind::postalAddress:
      return {Value::PostalAddress{postalAddress(), style, unescapedField(label)}, origin()};
    case DonationKind::imageData:
      break;
  }
  return {Value::ImageData{std::make_shared<const std::string>(
              decodedBase64(content[0]).value_or(std::string()))},
          origin()};
}

bool DonationTextReader::take(std::string_view expected) {
  if (!rest.starts_with(expected)) return false;
  rest.remove_prefix(expected.size());
  return true;
}

// Takes the text up to the next tag, if the writer could have written it. Saves copy accepted text
// as it is, so nothing may pass that the general reader would refuse or change, such as a CR.
bool DonationTextReader::takeText(std::string_view& text) {
  std::size_t size = lengthOfPlainPrefix(rest);
  if (size < rest.size() && rest[size] == '&') {
    size = rest.find('<', size);
    const std::string_view escaped = rest.substr(0, size);
    std::string unescaped;
    if (escaped.find('\r') != std::string_view::npos ||
        findForbiddenCharacter(escaped) != std::string_view::npos ||
        !appendUnescapedXML(unescaped, escaped)) {
      return false;
    }
  }
  if (size >= rest.size() || rest[size] != '<') return false;
  text = rest.substr(0, size);
  rest.remove_prefix(size);
  return true;
}

bool DonationTextReader::takeReal(Date& date) {
  std::string_view digits;
  double seconds = 0;
  if (!takeText(digits) || !parseWhole(digits, seconds) || !std::isfinite(seconds)) return false;
  date = Date(seconds);
  return true;
}

bool DonationTextReader::takeInteger(PostalAddressStyle& style) {
  std::string_view digits;
  std::int64_t number = 0;
  if (!takeText(digits) || !parseWhole(digits, number)) return false;
  style = static_cast<PostalAddressStyle>(number);
  return true;
}

bool DonationTextReader::takeOrigin(DonationFields& fields) {
  if (!take("<key>origin</key><dict>\n<key>bundleIdentifier</key><string>") ||
      !takeText(fields.bundleIdentifier) || !take("</string>\n<key>")) {
    return false;
  }
  if (take("clusterIdentifier</key><string>") &&
      (!takeText(fields.clusterIdentifier) || !take("</string>\n<key>"))) {
    return false;
  }
  return take("donationDate</key><real>") && takeReal(fields.donationDate) &&
         take("</real>\n<key>donationIdentifier</key><string>") &&
         takeText(fields.donationIdentifier) &&
         take("</string>\n<key>expirationDate</key><real>") && takeReal(fields.expirationDate) &&
         take("</real>\n</dict>\n");
}

bool DonationTextReader::takeLabelAndOrigin(DonationFields& fields) {
  return take("<key>label</key><string>") && takeText(fields.label) && take("</string>\n") &&
         takeOrigin(fields);
}

bool DonationTextReader::takeDictionary(const Keys& ascendingKeys, DonationFields& fields) {
  std::size_t place = 0;
  while (take("<key>")) {
    std::string_view key;
    if (!takeText(key) || key.empty()) return false;
    // Only forward: a key that repeats or is out of order is not found.
    while (place < ascendingKeys.size() && ascendingKeys[place] != key) ++place;
    if (place == ascendingKeys.size() || !take("</key><string>") ||
        !takeText(fields.content[place]) || !take("</string>\n")) {
      return false;
    }
    ++place;
  }
  return take("</dict>\n");
}

// The first key of a record tells its kind.
bool DonationTextReader::takeContent(DonationFields& fields) {
  if (take("<key>emailAddress</key><string>")) {
    fields.kind = DonationKind::emailAddress;
    return takeText(fields.content[0]) && take("</string>\n") && takeLabelAndOrigin(fields);
  }
  if (take("<key>nameComponents</key><dict>\n")) {
    fields.kind = DonationKind::name;
    return takeDictionary(nameKeys, fields) && takeOrigin(fields);
  }
  if (take("<key>imageData</key><data>")) {
    fields.kind = DonationKind::imageData;
    return takeText(fields.content[0]) && take("</data>\n") && takeOrigin(fields);
  }
  if (!takeLabelAndOrigin(fields)) return false;
  if (take("<key>phoneNumber</key><string>")) {
    fields.kind = DonationKind::phoneNumber;
    return takeText(fields.content[0]) && take("</string>\n");
  }
  fields.kind = DonationKind::postalAddress;
  return take("<key>postalAddress</key><dict>\n") && takeDictionary(postalKeys, fields) &&
         take("<key>style</key><integer>") && takeInteger(fields.style) && take("</integer>\n");
}

std::optional<DonationFields> DonationTextReader::takeRecord() {
  DonationFields fields;
  if (!take("<dict>\n") || !takeContent(fields) || !take("</dict>\n")) return std::nullopt;
  return fields;
}

}  // namespace quenlet
