#pragma once

#include <string>
#include <string_view>

#include "platform/contacts/Contact.h"
#include "platform/contacts/PostalAddress.h"

// The structured values of a card, N and ADR, from and to their escaped text. Pure functions.
namespace quenlet {

// Fills the five name fields from an N value; several values of one component are parted by spaces.
// Answers whether any was there.
bool readVCardName(std::string_view escaped, ContactFields& into);
[[nodiscard]] std::string vCardNameText(const Contact& contact);

// The address of an ADR value. Post office box, extended address and street are the lines of the
// street, as are several values of the street. The two finest parts of a city and its district are
// read from where RFC 9554 puts them.
[[nodiscard]] PostalAddress readVCardAddress(std::string_view escaped);
// Without the ISO country code, for which the value has no place.
[[nodiscard]] std::string vCardAddressText(const PostalAddress& address);

}  // namespace quenlet
