#include "platform/contacts/VCardBuilder.h"

#include <algorithm>
#include <optional>
#include <utility>

#include "platform/contacts/EmailAddressScanner.h"
#include "platform/contacts/NameComponentsTokenizer.h"
#include "platform/contacts/VCardErrors.h"
#include "platform/contacts/VCardLabels.h"
#include "platform/contacts/VCardStructures.h"
#include "platform/contacts/VCardText.h"
#include "platform/contacts/ValueBounds.h"
#include "platform/foundation/Base64.h"
#include "platform/foundation/Text.h"

namespace quenlet {
namespace {

// Bounds the memory: an entry takes many times that of the shortest line for one.
constexpr std::size_t mostEntriesOfAKind = 1000;
constexpr std::size_t mostGroups = 3 * mostEntriesOfAKind;

std::string textOf(const VCardProperty& property) {
  const std::string text = unescapedVCardText(property.value);
  return std::string(trimmed(text));
}

bool startsWithScheme(std::string_view text, std::string_view scheme) {
  return lowercased(text.substr(0, scheme.size())) == scheme;
}

// The address of a "mailto:" link, or `text` when it is not a link.
std::string addressOfLink(std::string text) {
  constexpr std::string_view scheme = "mailto:";
  if (!startsWithScheme(text, scheme)) return text;
  text.erase(0, scheme.size());
  text.resize(std::min(text.find('?'), text.size()));
  const std::optional<std::string> decoded = decodedDataURI("," + text);
  // Percent escapes must not smuggle in characters that a line must not hold.
  const bool usable = decoded && isValidUTF8(*decoded) && !holdsControlCharacter(*decoded);
  return std::string(trimmed(usable ? *decoded : text));
}

// The address in the text of an EMAIL: all of it when it looks like one (a host without a dot will
// do), else the one in "Ann <ann@example.com>".
std::optional<std::string> addressIn(std::string text) {
  const std::size_t at = text.find('@');
  const bool isAddress = at != std::string::npos && at > 0 && at + 1 < text.size() &&
                         text.find_first_of(" \t\n<>") == std::string::npos;
  if (isAddress) return text;
  return EmailAddressScanner().firstEmailAddressInString(text);
}

bool isCountryCode(std::string_view code) {
  const auto isLetter = [](char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); };
  return code.size() == 2 && std::all_of(code.begin(), code.end(), isLetter);
}

bool isTooLong(const PostalAddress& address) {
  const auto fields = address.dictionaryRepresentation();
  return std::any_of(fields.begin(), fields.end(), [](const auto& field) {
    return field.second.string()->size() > mostBytesInText;
  });
}

}  // namespace

const std::map<std::string, VCardBuilder::Reading, std::less<>>& VCardBuilder::readings() {
  using Key = KeyDescriptor;
  static const std::map<std::string, Reading, std::less<>> table = {
      {"VERSION", {&VCardBuilder::addVersion}},
      {"KIND", {&VCardBuilder::addKind}},
      {"X-ADDRESSBOOKSERVER-KIND", {&VCardBuilder::addKind}},
      {"UID", {&VCardBuilder::addUID}},
      {"FN", {&VCardBuilder::addFormattedName}},
      {"N", {&VCardBuilder::addName}},
      {"NICKNAME", {&VCardBuilder::addNickname}},
      {"EMAIL", {&VCardBuilder::addEmailAddress, Key::emailAddresses}},
      {"TEL", {&VCardBuilder::addPhoneNumber, Key::phoneNumbers}},
      {"ADR", {&VCardBuilder::addPostalAddress, Key::postalAddresses}},
      {"X-ABLABEL", {&VCardBuilder::addLabel}},
      {"X-ABADR", {&VCardBuilder::addCountryCode, Key::postalAddresses}},
      {"PHOTO", {&VCardBuilder::addPhoto, Key::imageData}},
  };
  return table;
}

VCardBuilder::VCardBuilder(const std::vector<KeyDescriptor>& keys, std::size_t beginLine,
                           std::size_t place)
    : wantedKeys(keys), firstLine(beginLine) {
  card.place = place;
}

void VCardBuilder::add(std::string_view line, std::size_t lineNumber) {
  currentLine = lineNumber;
  const std::string name = nameOfVCardLine(line);
  const auto reading = readings().find(name);
  const bool isRead = reading != readings().end() && isAskedFor(reading->second);
  const bool isProperty = !name.empty() && line.find(':') != std::string_view::npos;
  if (isRead ? !take(reading->second, line) : !isProperty) noteSkipped(isRead ? name : "");
}

void VCardBuilder::noteSkipped(std::string property) {
  if (card.skippedEntries++ >= VCard::mostSkippedNamed) return;
  card.skipped.push_back({std::move(property), currentLine});
}

bool VCardBuilder::isAskedFor(const Reading& reading) const {
  return !reading.onlyFor ||
         std::find(wantedKeys.begin(), wantedKeys.end(), *reading.onlyFor) != wantedKeys.end();
}

bool VCardBuilder::take(const Reading& reading, std::string_view line) {
  std::optional<VCardProperty> property = parseVCardProperty(line);
  if (!property) return false;
  if (trimmed(property->value).empty()) return true;
  // A photo can be megabytes: it is neither checked as text nor bounded like one.
  if (reading.onlyFor == KeyDescriptor::imageData) return (this->*reading.handler)(*property);
  std::string buffer;
  const auto text = vCardValueAsText(*property, currentSyntax, buffer);
  const bool isUsable = text && text->size() <= mostBytesInText &&
                        isValidUTF8(property->parameters) &&
                        !holdsControlCharacter(property->parameters);
  if (!isUsable) return false;
  property->value = *text;
  return (this->*reading.handler)(*property);
}

void VCardBuilder::setFailure(ContactErrorCode code, const char* offence) {
  if (!failure) failure = makeVCardError(code, currentLine, offence);
}

bool VCardBuilder::addVersion(const VCardProperty& property) {
  const std::string_view version = trimmed(property.value);
  if (version == "2.1") {
    currentSyntax = VCardSyntax::old;
  } else if (version != "3.0" && version != "4.0") {
    setFailure(ContactErrorCode::unsupportedVersion,
               "an unknown vCard version; 2.1, 3.0 and 4.0 are read");
  }
  return true;
}

bool VCardBuilder::addKind(const VCardProperty& property) {
  card.kind = lowercased(textOf(property));
  if (card.kind == "org" || card.kind == "group" || card.kind == "location") {
    setFailure(ContactErrorCode::notAPerson, "a card of an organisation, a group or a place");
  }
  return true;
}

// The first photo whose bytes are in the card. A mere link to a photo is skipped.
bool VCardBuilder::addPhoto(const VCardProperty& property) {
  if (fields.imageData) return true;
  const std::string encoding = lowercased(property.parameterValue("ENCODING"));
  const std::string_view value = trimmed(property.value);
  std::optional<std::string> bytes{std::in_place};
  if (startsWithScheme(value, "data:")) {
    bytes = decodedDataURI(value);
  } else if (encoding == "b" || encoding == "base64") {
    bytes = decodedBase64(value, Base64Padding::optional);
  }
  if (!bytes || bytes->size() > mostBytesInImage) return false;
  if (!bytes->empty()) fields.imageData = std::make_shared<const std::string>(std::move(*bytes));
  return true;
}

bool VCardBuilder::addUID(const VCardProperty& property) {
  if (card.uid.empty()) card.uid = textOf(property);
  return true;
}

bool VCardBuilder::addFormattedName(const VCardProperty& property) {
  if (!card.formattedName.empty()) return true;
  card.formattedName = textOf(property);
  formattedNameIsDerived = lowercased(property.parameterValue("DERIVED")) == "true";
  return true;
}

bool VCardBuilder::addName(const VCardProperty& property) {
  if (!hasName) hasName = readVCardName(property.value, fields);
  return true;
}

bool VCardBuilder::addNickname(const VCardProperty& property) {
  std::optional<std::string_view> rest = property.value;
  while (rest && fields.nickname.empty()) {
    fields.nickname = trimmed(unescapedVCardText(takeVCardText(rest, ',')));
  }
  return true;
}

bool VCardBuilder::addEmailAddress(const VCardProperty& property) {
  std::optional<std::string> address = addressIn(addressOfLink(textOf(property)));
  return address && append(emailAddresses, property, std::move(*address));
}

bool VCardBuilder::addPhoneNumber(const VCardProperty& property) {
  constexpr std::string_view scheme = "tel:";
  const std::string text = textOf(property);
  const std::string_view number =
      std::string_view(text).substr(startsWithScheme(text, scheme) ? scheme.size() : 0);
  auto phoneNumber = PhoneNumber::withStringValue(number);
  return phoneNumber && append(phoneNumbers, property, std::move(*phoneNumber));
}

bool VCardBuilder::addPostalAddress(const VCardProperty& property) {
  PostalAddress address = readVCardAddress(property.value);
  const std::string code = property.parameterValue("CC");
  if (isCountryCode(trimmed(code))) address.isoCountryCode = trimmed(code);
  if (address == PostalAddress()) return true;
  return !isTooLong(address) && append(postalAddresses, property, std::move(address));
}

bool VCardBuilder::addLabel(const VCardProperty& property) {
  if (labelsByGroup.size() >= mostGroups) return false;
  labelsByGroup.try_emplace(property.group, labelFromCustomLabel(property.value));
  return true;
}

bool VCardBuilder::addCountryCode(const VCardProperty& property) {
  std::string code = textOf(property);
  if (!isCountryCode(code)) return true;
  if (countryCodesByGroup.size() >= mostGroups) return false;
  countryCodesByGroup.try_emplace(property.group, std::move(code));
  return true;
}

template <typename T>
bool VCardBuilder::append(Entries<T>& entries, const VCardProperty& property, T value) {
  std::string label = labelFromTypes(property);
  if (entries.size() >= mostEntriesOfAKind || label.size() > mostBytesInText) return false;
  entries.push_back({property.group,
                     preferenceOf(property),
                     {.label = std::move(label), .value = std::move(value), .storeInfo = {}}});
  return true;
}

template <typename T>
LabeledValues<T> VCardBuilder::finished(Entries<T> entries) const {
  // Stable: entries of the same preference keep their order in the card.
  std::stable_sort(entries.begin(), entries.end(), [](const Entry<T>& a, const Entry<T>& b) {
    return a.preference < b.preference;
  });
  LabeledValues<T> list;
  list.reserve(entries.size());
  for (Entry<T>& entry : entries) {
    const auto label = entry.group.empty() ? labelsByGroup.end() : labelsByGroup.find(entry.group);
    if (label != labelsByGroup.end()) entry.labeledValue.label = label->second;
    list.append(std::make_shared<const LabeledValue<T>>(std::move(entry.labeledValue)));
  }
  return list;
}

// Programs without a name to write put the first other thing they know into FN.
bool VCardBuilder::formattedNameIsAName() const {
  const std::string name = addressOfLink(card.formattedName);
  const bool isAddress = name.find('@') != std::string::npos && name.find(' ') == std::string::npos;
  return !formattedNameIsDerived && !isAddress && !PhoneNumber::isNumber(name);
}

void VCardBuilder::takeNameFromFormattedName() {
  const PersonNameComponents name =
      NameComponentsTokenizer::componentsFromString(card.formattedName);
  fields.namePrefix = name.namePrefix.value_or(std::string());
  fields.givenName = name.givenName.value_or(std::string());
  fields.middleName = name.middleName.value_or(std::string());
  fields.familyName = name.familyName.value_or(std::string());
  fields.nameSuffix = name.nameSuffix.value_or(std::string());
  if (fields.nickname.empty()) fields.nickname = name.nickname.value_or(std::string());
}

Result<VCard> VCardBuilder::build() && {
  if (failure) return Result<VCard>::failure(failure);
  if (!hasName && formattedNameIsAName()) takeNameFromFormattedName();
  for (Entry<PostalAddress>& entry : postalAddresses) {
    const auto code = countryCodesByGroup.find(entry.group);
    if (entry.group.empty() || code == countryCodesByGroup.end()) continue;
    // The CC parameter of the address itself takes precedence.
    std::string& isoCountryCode = entry.labeledValue.value.isoCountryCode;
    if (isoCountryCode.empty()) isoCountryCode = code->second;
  }
  fields.emailAddresses = finished(std::move(emailAddresses));
  fields.phoneNumbers = finished(std::move(phoneNumbers));
  fields.postalAddresses = finished(std::move(postalAddresses));
  card.contact = Contact(std::move(fields));
  return Result<VCard>::success(std::move(card));
}

}  // namespace quenlet
