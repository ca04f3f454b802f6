#include "platform/contacts/VCardStructures.h"

#include <array>
#include <initializer_list>
#include <optional>

#include "platform/contacts/VCardText.h"
#include "platform/foundation/Text.h"

namespace quenlet {
namespace {

// The places of an ADR value. The first seven are always written.
enum AddressPlace : std::size_t {
  postOfficeBox,
  extendedAddress,
  street,
  locality,
  region,
  postalCode,
  country,
  subdistrict = 14,
  district = 15,
  addressPlaces = 18,
};

// The first `Count` components of a structured value, still escaped; missing ones are empty.
template <std::size_t Count>
std::array<std::string_view, Count> componentsOf(std::string_view escaped) {
  std::array<std::string_view, Count> components;
  std::optional<std::string_view> rest = escaped;
  for (std::size_t i = 0; i < Count && rest; ++i) components[i] = takeVCardText(rest, ';');
  return components;
}

void append(std::string& text, std::string_view part, std::string_view joiner) {
  part = trimmed(part);
  if (part.empty()) return;
  if (!text.empty()) text += joiner;
  text += part;
}

// Joins the values of one component into one text.
std::string joinedList(std::string_view escaped, std::string_view joiner) {
  std::string text;
  std::optional<std::string_view> rest = escaped;
  while (rest) append(text, unescapedVCardText(takeVCardText(rest, ',')), joiner);
  return text;
}

std::string structuredText(std::initializer_list<std::string_view> components) {
  std::string text;
  bool first = true;
  for (const std::string_view component : components) {
    if (!first) text += ';';
    text += escapedVCardText(component);
    first = false;
  }
  return text;
}

}  // namespace

bool readVCardName(std::string_view escaped, ContactFields& into) {
  const auto components = componentsOf<5>(escaped);
  into.familyName = joinedList(components[0], " ");
  into.givenName = joinedList(components[1], " ");
  into.middleName = joinedList(components[2], " ");
  into.namePrefix = joinedList(components[3], " ");
  into.nameSuffix = joinedList(components[4], " ");
  return !(into.familyName.empty() && into.givenName.empty() && into.middleName.empty() &&
           into.namePrefix.empty() && into.nameSuffix.empty());
}

std::string vCardNameText(const Contact& contact) {
  return structuredText({contact.familyName(), contact.givenName(), contact.middleName(),
                         contact.namePrefix(), contact.nameSuffix()});
}

PostalAddress readVCardAddress(std::string_view escaped) {
  const auto components = componentsOf<addressPlaces>(escaped);
  PostalAddress address;
  for (const AddressPlace place : {postOfficeBox, extendedAddress, street}) {
    append(address.street, joinedList(components[place], "\n"), "\n");
  }
  address.subLocality = joinedList(components[subdistrict], ", ");
  address.city = joinedList(components[locality], ", ");
  address.subAdministrativeArea = joinedList(components[district], ", ");
  address.state = joinedList(components[region], ", ");
  address.postalCode = joinedList(components[postalCode], ", ");
  address.country = joinedList(components[country], ", ");
  return address;
}

std::string vCardAddressText(const PostalAddress& address) {
  std::string text = structuredText(
      {"", "", address.street, address.city, address.state, address.postalCode, address.country});
  if (address.subLocality.empty() && address.subAdministrativeArea.empty()) return text;
  text.append(subdistrict - country, ';');
  text += structuredText({address.subLocality, address.subAdministrativeArea, "", ""});
  return text;
}

}  // namespace quenlet
