#include "platform/contacts/PersonNameComponents.h"

#include "platform/contacts/Contact.h"
#include "platform/foundation/Text.h"

namespace quenlet {
namespace {

std::optional<std::string> presentUnlessEmpty(const std::string& field) {
  if (field.empty()) return std::nullopt;
  return field;
}

bool sameComponent(const std::optional<std::string>& a, const std::optional<std::string>& b) {
  if (!a || !b) return a.has_value() == b.has_value();
  return canonicallyEqual(*a, *b);
}

}  // namespace

PropertyListDictionary PersonNameComponents::dictionaryRepresentation() const {
  PropertyListDictionary entries;
  for (const auto& [key, component] : nameComponentsByKey) {
    if (const auto& text = this->*component) entries.emplace(key, *text);
  }
  return entries;
}

PersonNameComponents PersonNameComponents::componentsWithDictionary(
    const PropertyListDictionary& entries) {
  PersonNameComponents components;
  for (const auto& [key, component] : nameComponentsByKey) {
    if (const std::string* text = findString(entries, key)) components.*component = *text;
  }
  return components;
}

PersonNameComponents PersonNameComponents::componentsForContact(const Contact& contact) {
  return {.namePrefix = presentUnlessEmpty(contact.namePrefix()),
          .givenName = presentUnlessEmpty(contact.givenName()),
          .middleName = presentUnlessEmpty(contact.middleName()),
          .familyName = presentUnlessEmpty(contact.familyName()),
          .nameSuffix = presentUnlessEmpty(contact.nameSuffix()),
          .nickname = presentUnlessEmpty(contact.nickname())};
}

bool operator==(const PersonNameComponents& a, const PersonNameComponents& b) {
  for (const auto& [key, component] : nameComponentsByKey) {
    if (!sameComponent(a.*component, b.*component)) return false;
  }
  return true;
}

}  // namespace quenlet
