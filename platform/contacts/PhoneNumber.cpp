#include "platform/contacts/PhoneNumber.h"

#include "platform/contacts/PhoneNumberScanner.h"

namespace quenlet {
namespace {

// Fast path: whether the text is a number of digits, blanks and dashes alone, as most are.
bool isPlainNumber(std::string_view text) {
  constexpr int leastDigits = 2;
  constexpr int mostDigits = 20;
  if (text.starts_with('+')) text.remove_prefix(1);
  int digits = 0;
  for (const char c : text) {
    if (c >= '0' && c <= '9') {
      ++digits;
    } else if (c != ' ' && c != '-') {
      return false;
    }
  }
  return digits >= leastDigits && digits <= mostDigits;
}

}  // namespace

bool PhoneNumber::isNumber(std::string_view text) {
  return isPlainNumber(text) || PhoneNumberScanner(text).scan().has_value();
}

std::optional<PhoneNumber> PhoneNumber::withStringValue(std::string_view text) {
  if (!isNumber(text)) return std::nullopt;
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
