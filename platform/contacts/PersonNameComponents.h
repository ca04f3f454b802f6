#pragma once

#include <array>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "platform/foundation/PropertyList.h"

namespace quenlet {

inline constexpr char NamePrefixKey[] = "namePrefix";
inline constexpr char GivenNameKey[] = "givenName";
inline constexpr char MiddleNameKey[] = "middleName";
inline constexpr char FamilyNameKey[] = "familyName";
inline constexpr char NameSuffixKey[] = "nameSuffix";
inline constexpr char NicknameKey[] = "nickname";

class Contact;

// A person's name in its components; each may be absent, which is not the same as empty. A value
// type.
struct PersonNameComponents final {
  std::optional<std::string> namePrefix = {};
  std::optional<std::string> givenName = {};
  std::optional<std::string> middleName = {};
  std::optional<std::string> familyName = {};
  std::optional<std::string> nameSuffix = {};
  std::optional<std::string> nickname = {};

  // The present components, each under its key.
  [[nodiscard]] PropertyListDictionary dictionaryRepresentation() const;
  // Each component from its key when that key holds a string, else absent.
  [[nodiscard]] static PersonNameComponents componentsWithDictionary(
      const PropertyListDictionary& entries);
  // The six name fields of `contact`; a field that is empty or was not fetched is absent.
  [[nodiscard]] static PersonNameComponents componentsForContact(const Contact& contact);

  // Compares by canonical equivalence; an absent component equals only an absent one.
  friend bool operator==(const PersonNameComponents& a, const PersonNameComponents& b);
};

// In ascending order of the keys.
inline constexpr std::array<
    std::pair<std::string_view, std::optional<std::string> PersonNameComponents::*>, 6>
    nameComponentsByKey = {{{FamilyNameKey, &PersonNameComponents::familyName},
                            {GivenNameKey, &PersonNameComponents::givenName},
                            {MiddleNameKey, &PersonNameComponents::middleName},
                            {NamePrefixKey, &PersonNameComponents::namePrefix},
                            {NameSuffixKey, &PersonNameComponents::nameSuffix},
                            {NicknameKey, &PersonNameComponents::nickname}}};

}  // namespace quenlet
