#include "platform/contacts/PhoneNumber.h"

#include <algorithm>

#include "platform/contacts/PhoneNumberMatcher.h"
#include "platform/contacts/PhoneNumberScanner.h"

namespace quenlet {
namespace {

// As many as a number has within its area, where numbers are long enough for areas.
constexpr std::size_t significantDigits = 7;

std::string_view withoutPlus(std::string_view digits) {
  if (digits.starts_with('+')) digits.remove_prefix(1);
  return digits;
}

std::string_view lastDigits(std::string_view digits) {
  digits = withoutPlus(digits);
  return digits.substr(digits.size() - std::min(digits.size(), significantDigits));
}

}  // namespace

std::optional<PhoneNumber> PhoneNumber::withStringValue(std::string_view text) {
  if (!PhoneNumberScanner(text).scan()) return std::nullopt;
  return PhoneNumber(std::string(text));
}

std::string PhoneNumber::digits() const {
  return PhoneNumberScanner(text).scan().value_or(std::string());
}

bool PhoneNumber::isLikePhoneNumber(const PhoneNumber& other) const {
  PhoneNumberScanner ours(text);
  PhoneNumberScanner theirs(other.text);
  const std::string a = ours.scan().value_or(std::string());
  const std::string b = theirs.scan().value_or(std::string());
  if (ours.extension() != theirs.extension()) return false;
  if (a == b) return true;
  if (std::min(withoutPlus(a).size(), withoutPlus(b).size()) < significantDigits) return false;
  return lastDigits(a) == lastDigits(b) && PhoneNumberMatcher::shared().areSameNumber(a, b);
}

std::string PhoneNumber::likenessKey() const { return std::string(lastDigits(digits())); }

}  // namespace quenlet
