#pragma once

#include <string_view>

namespace quenlet {

// A field of a contact that a fetch can ask for.
enum class KeyDescriptor {
  namePrefix,
  givenName,
  middleName,
  familyName,
  nameSuffix,
  nickname,
  emailAddresses,
  phoneNumbers,
  postalAddresses,
  imageData,
};

inline constexpr KeyDescriptor ContactGivenNameKey = KeyDescriptor::givenName;
inline constexpr KeyDescriptor ContactFamilyNameKey = KeyDescriptor::familyName;
inline constexpr KeyDescriptor ContactEmailAddressesKey = KeyDescriptor::emailAddresses;
inline constexpr KeyDescriptor ContactPhoneNumbersKey = KeyDescriptor::phoneNumbers;
inline constexpr KeyDescriptor ContactPostalAddressesKey = KeyDescriptor::postalAddresses;

}  // namespace quenlet
