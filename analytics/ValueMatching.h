#pragma once

#include <string>

#include "platform/contacts/PhoneNumber.h"
#include "platform/contacts/PostalAddress.h"

// When two values of one kind are the same one. What matches shares a key, by which the candidates
// are found without comparing all with all. Pure functions.
namespace quenlet {

// E-mail addresses and postal addresses match when they are equal, text by canonical equivalence,
// letter case and all: when they share the key.
[[nodiscard]] std::string matchingKey(const std::string& emailAddress);
[[nodiscard]] std::string matchingKey(const PostalAddress& address);
// Phone numbers match when the added one is like the listed one.
[[nodiscard]] std::string matchingKey(const PhoneNumber& number);

// Whether two values with one key match.
template <typename T>
[[nodiscard]] bool candidatesMatch(const T&, const T&) {
  return true;
}
[[nodiscard]] bool candidatesMatch(const PhoneNumber& added, const PhoneNumber& listed);

// A value as a description shows it.
[[nodiscard]] std::string describedValue(const std::string& emailAddress);
[[nodiscard]] std::string describedValue(const PhoneNumber& number);
[[nodiscard]] std::string describedValue(const PostalAddress& address);

}  // namespace quenlet
