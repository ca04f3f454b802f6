#include "sources/accounts/AccountPropertyParser.h"

#include <algorithm>
#include <array>
#include <string>

#include "platform/contacts/NameComponentsTokenizer.h"

namespace quenlet {
namespace {

using Name = std::optional<PersonNameComponents>;
using NameExtractor = Name (*)(const PropertyListDictionary& properties);

Name nameIfValid(PersonNameComponents name) {
  if (!name.givenName && !name.familyName) return std::nullopt;
  return name;
}

std::optional<std::string> textOf(const PropertyListDictionary& entries, const char* key) {
  const std::string* text = findString(entries, key);
  return text ? std::optional(*text) : std::nullopt;
}

Name fullName(const PropertyListDictionary& entries, const char* key) {
  const std::string* text = findString(entries, key);
  if (!text) return std::nullopt;
  return nameIfValid(NameComponentsTokenizer::componentsFromString(*text));
}

// The first full name of a dictionary of dictionaries.
Name nameOfPrincipals(const PropertyListDictionary& properties, const char* key,
                      const char* nameKey) {
  const PropertyListDictionary* principals = findDictionary(properties, key);
  if (!principals) return std::nullopt;
  if (!std::all_of(principals->begin(), principals->end(),
                   [](const auto& entry) { return entry.second.dictionary(); })) {
    return std::nullopt;
  }
  for (const auto& [identifier, principal] : *principals) {
    if (Name name = fullName(*principal.dictionary(), nameKey)) return name;
  }
  return std::nullopt;
}

constexpr std::array<NameExtractor, 5> nameExtractors = {
    [](const PropertyListDictionary& properties) {
      PersonNameComponents name;
      name.givenName = textOf(properties, "firstName");
      name.familyName = textOf(properties, "lastName");
      return nameIfValid(std::move(name));
    },
    [](const PropertyListDictionary& properties) {
      return fullName(properties, "ZeltPropertyFullName");
    },
    [](const PropertyListDictionary& properties) { return fullName(properties, "FullUserName"); },
    [](const PropertyListDictionary& properties) {
      return nameOfPrincipals(properties, "kCalDAVPrincipalsKey", "ZeltPropertyFullName");
    },
    [](const PropertyListDictionary& properties) {
      return nameOfPrincipals(properties, "CalDAVPrincipals", "FullName");
    },
};

}  // namespace

std::optional<PersonNameComponents> AccountPropertyNameParser::parseNameWithAccount(
    const Account& account) {
  for (const NameExtractor extract : nameExtractors) {
    if (Name name = extract(account.properties)) return name;
  }
  return std::nullopt;
}

}  // namespace quenlet
