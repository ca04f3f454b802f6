#include "platform/contacts/VCardBuilder.h"

#include <algorithm>
#include <optional>
#include <utility>

#include "platform/contacts/NameComponentsTokenizer.h"
#include "platform/contacts/VCardErrors.h"
#include "platform/contacts/VCardLabels.h"
#include "platform/contacts/VCardStructures.h"
#include "platform/contacts/VCardText.h"
#include "platform/foundation/Base64.h"
#include "platform/foundation/Text.h"

namespace quenlet {
namespace {

std::string textOf(const VCardProperty& property) {
  const std::string text = unescapedVCardText(property.value);
  return std::string(trimmed(text));
}

bool isQuotedPrintable(const VCardProperty& property) {
  return lowercased(property.parameterValue("ENCODING")) == "quoted-printable";
}

bool startsWithScheme(std::string_view text, std::string_view scheme) {
  return lowercased(text.substr(0, scheme.size())) == scheme;
}

// The address of a "mailto:" link, or `text` when it is none.
std::string addressOfLink(std::string text) {
  constexpr std::string_view scheme = "mailto:";
  if (!startsWithScheme(text, scheme)) return text;
  text.erase(0, scheme.size());
  text.resize(std::min(text.find('?'), text.size()));
  const std::optional<std::string> decoded = decodedDataURI("," + text);
  // Percents must not bring in what a line may not hold.
  const bool usable = decoded && isValidUTF8(*decoded) && !holdsControlCharacter(*decoded);
  return std::string(trimmed(usable ? *decoded : text));
}

}  // namespace

const std::map<std::string, VCardBuilder::Handler, std::less<>>& VCardBuilder::handlers() {
  static const std::map<std::string, Handler, std::less<>> table = {
      {"UID", &VCardBuilder::addUID},          {"FN", &VCardBuilder::addFormattedName},
      {"N", &VCardBuilder::addName},           {"NICKNAME", &VCardBuilder::addNickname},
      {"ORG", &VCardBuilder::addOrganization}, {"EMAIL", &VCardBuilder::addEmailAddress},
      {"TEL", &VCardBuilder::addPhoneNumber},  {"ADR", &VCardBuilder::addPostalAddress},
      {"X-ABLABEL", &VCardBuilder::addLabel},  {"X-ABADR", &VCardBuilder::addCountryCode},
      {"PHOTO", &VCardBuilder::addPhoto},
  };
  return table;
}

ErrorPtr VCardBuilder::add(const VCardProperty& property) {
  if (property.name == "VERSION") return addVersion(property);
  if (isQuotedPrintable(property)) {
    return makeVCardError(ContactErrorCode::unsupportedVersion, property.lineNumber,
                          "quoted-printable text, as vCard 2.1 has it; only 3.0 and 4.0 are read");
  }
  if (trimmed(property.value).empty()) return nullptr;
  const auto handler = handlers().find(property.name);
  if (handler != handlers().end()) (this->*handler->second)(property);
  return nullptr;
}

ErrorPtr VCardBuilder::addVersion(const VCardProperty& property) {
  const std::string_view version = trimmed(property.value);
  if (version == "3.0" || version == "4.0") {
    hasVersion = true;
    return nullptr;
  }
  return makeVCardError(ContactErrorCode::unsupportedVersion, property.lineNumber,
                        version == "2.1" ? "a card of vCard 2.1; only 3.0 and 4.0 are read"
                                         : "an unknown vCard version; only 3.0 and 4.0 are read");
}

// The first photo whose bytes are in the card. A link to one elsewhere is passed over.
void VCardBuilder::addPhoto(const VCardProperty& property) {
  if (fields.imageData) return;
  const std::string encoding = lowercased(property.parameterValue("ENCODING"));
  const std::string_view value = trimmed(property.value);
  std::optional<std::string> bytes{std::in_place};
  if (startsWithScheme(value, "data:")) {
    bytes = decodedDataURI(value);
  } else if (encoding == "b" || encoding == "base64") {
    bytes = decodedBase64(value, Base64Padding::optional);
  }
  if (!bytes) {
    ++card.skippedEntries;
  } else if (!bytes->empty()) {
    fields.imageData = std::make_shared<const std::string>(std::move(*bytes));
  }
}

void VCardBuilder::addUID(const VCardProperty& property) {
  if (card.uid.empty()) card.uid = textOf(property);
}

void VCardBuilder::addFormattedName(const VCardProperty& property) {
  if (card.formattedName.empty()) card.formattedName = textOf(property);
}

void VCardBuilder::addName(const VCardProperty& property) {
  if (!hasName) hasName = readVCardName(property.value, fields);
}

void VCardBuilder::addNickname(const VCardProperty& property) {
  std::optional<std::string_view> rest = property.value;
  while (rest && fields.nickname.empty()) {
    fields.nickname = trimmed(unescapedVCardText(takeVCardText(rest, ',')));
  }
}

void VCardBuilder::addOrganization(const VCardProperty& property) {
  std::optional<std::string_view> rest = property.value;
  const std::string name = unescapedVCardText(takeVCardText(rest, ';'));
  if (organization.empty()) organization = trimmed(name);
}

void VCardBuilder::addEmailAddress(const VCardProperty& property) {
  std::string address = addressOfLink(textOf(property));
  if (address.empty()) {
    ++card.skippedEntries;
  } else {
    append(emailAddresses, property, std::move(address));
  }
}

void VCardBuilder::addPhoneNumber(const VCardProperty& property) {
  constexpr std::string_view scheme = "tel:";
  const std::string text = textOf(property);
  const std::string_view number =
      std::string_view(text).substr(startsWithScheme(text, scheme) ? scheme.size() : 0);
  if (auto phoneNumber = PhoneNumber::withStringValue(number)) {
    append(phoneNumbers, property, std::move(*phoneNumber));
  } else {
    ++card.skippedEntries;
  }
}

void VCardBuilder::addPostalAddress(const VCardProperty& property) {
  PostalAddress address = readVCardAddress(property.value);
  address.isoCountryCode = trimmed(property.parameterValue("CC"));
  if (address == PostalAddress()) return;
  append(postalAddresses, property, std::move(address));
}

void VCardBuilder::addLabel(const VCardProperty& property) {
  labelsByGroup.try_emplace(property.group, labelFromCustomLabel(property.value));
}

void VCardBuilder::addCountryCode(const VCardProperty& property) {
  countryCodesByGroup.try_emplace(property.group, textOf(property));
}

template <typename T>
void VCardBuilder::append(Entries<T>& entries, const VCardProperty& property, T value) {
  entries.push_back(
      {property.group,
       preferenceOf(property),
       {.label = labelFromTypes(property), .value = std::move(value), .storeInfo = {}}});
}

template <typename T>
LabeledValues<T> VCardBuilder::finished(Entries<T> entries) const {
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

// Programs that know no name show the first other thing that they know.
bool VCardBuilder::formattedNameRepeatsAnother() const {
  const std::string name = addressOfLink(card.formattedName);
  return name == fields.nickname || name == organization || PhoneNumber::withStringValue(name) ||
         (name.find('@') != std::string::npos && name.find(' ') == std::string::npos) ||
         std::any_of(emailAddresses.begin(), emailAddresses.end(),
                     [&name](const auto& entry) { return entry.labeledValue.value == name; });
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

Result<VCard> VCardBuilder::build(std::size_t lineNumber) && {
  if (!hasVersion) {
    return Result<VCard>::right(
        makeInvalidVCardError(lineNumber, "the end of a card without VERSION"));
  }
  if (!hasName && !formattedNameRepeatsAnother()) takeNameFromFormattedName();
  for (Entry<PostalAddress>& entry : postalAddresses) {
    const auto code = countryCodesByGroup.find(entry.group);
    if (entry.group.empty() || code == countryCodesByGroup.end()) continue;
    std::string& isoCountryCode = entry.labeledValue.value.isoCountryCode;
    if (isoCountryCode.empty()) isoCountryCode = code->second;
  }
  fields.emailAddresses = finished(std::move(emailAddresses));
  fields.phoneNumbers = finished(std::move(phoneNumbers));
  fields.postalAddresses = finished(std::move(postalAddresses));
  card.contact = Contact(std::move(fields));
  return Result<VCard>::left(std::move(card));
}

}  // namespace quenlet
