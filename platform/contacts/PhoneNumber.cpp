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

bool PhoneNumber::isLikePhoneNumber(const PhoneNumber& other) const {
  const Likeness ours = likeness();
  const Likeness theirs = other.likeness();
  return ours.key == theirs.key && ours.number.isLike(theirs.number);
}

PhoneNumber::Likeness PhoneNumber::likeness() const {
  PhoneNumberScanner scanner(text);
  const std::string digits = scanner.scan().value_or(std::string());
  return {ComparableNumber::key(digits) + "x" + scanner.extension(), ComparableNumber(digits)};
}

}  // namespace quenlet
