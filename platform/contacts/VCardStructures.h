#pragma once

#include <string>
#include <string_view>

#include "platform/contacts/Contact.h"
#include "platform/contacts/PostalAddress.h"

// The structured values N and ADR of a card, from and to their escaped text. Pure functions.
namespace quenlet {

// Fills the five name fields from an N value; several values of one component are joined by spaces.
// False when all are empty.
bool readVCardName(std::string_view escaped, ContactFields& into);
[[nodiscard]] std::string vCardNameText(const Contact& contact);

// The address in an ADR value. Post office box, extended address and street become the lines of the
// street; each of several values is a line. Sub-locality and sub-administrative area come from the
// places that RFC 9554 gives to subdistrict and district.
[[nodiscard]] PostalAddress readVCardAddress(std::string_view escaped);
// Leaves out the ISO country code, for which the value has no place.
[[nodiscard]] std::string vCardAddressText(const PostalAddress& address);

}  // namespace quenlet
