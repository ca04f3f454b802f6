#pragma once

#include <string>
#include <string_view>

#include "model/DonationValue.h"
#include "platform/contacts/PersonNameComponents.h"
#include "quenlet/Date.h"

// Donated values as one-line texts for people; not made safe for a terminal. Pure functions.
namespace quenlet {

// "name", "emailAddress", "phoneNumber", "postalAddress" or "imageData".
[[nodiscard]] const char* kindOf(const Value& value);
// The same for people: "name", "e-mail", "phone", "address" or "image".
[[nodiscard]] const char* titleOfKind(const Value& value);
// The label of an address or number, else empty.
[[nodiscard]] std::string labelOf(const Value& value);

[[nodiscard]] std::string textOf(const Value& value);
// The same, but "an image" for one whose bytes were not kept.
[[nodiscard]] std::string shownText(const Value& value);
// In spoken order, with the nickname in quotes: Dr. Ann Mae Berg PhD "Annie".
[[nodiscard]] std::string textOf(const PersonNameComponents& name);
[[nodiscard]] std::string textOf(const PostalAddress& address);
[[nodiscard]] inline std::string textOf(const std::string& emailAddress) { return emailAddress; }
[[nodiscard]] inline std::string textOf(const PhoneNumber& number) { return number.stringValue(); }
// "1234 bytes, JPEG".
[[nodiscard]] std::string imageText(std::string_view imageData);
// "2026-05-01", in UTC.
[[nodiscard]] std::string dayOf(Date date);

}  // namespace quenlet
