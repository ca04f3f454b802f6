#include "platform/contacts/PhoneNumber.h"

#include "platform/contacts/PhoneNumberScanner.h"

namespace quenlet {

std::optional<PhoneNumber> PhoneNumber::withStringValue(std::string_view text) {
  if (!PhoneNumberScanner(text).scan()) return std::nullopt;
  return PhoneNumber(std::string(text));
}

std::string PhoneNumber::digits() const {
  return PhoneNumberScanner(text).scan().value_or(std::string());
}

}  // namespace quenlet
