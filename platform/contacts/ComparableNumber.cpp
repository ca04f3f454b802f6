#include "platform/contacts/ComparableNumber.h"

#include <algorithm>

#include "platform/contacts/PhoneNumberLibrary.h"

namespace quenlet {
namespace {

// Some countries have numbers of five digits; local numbers within the area of a larger one have
// seven.
constexpr std::uint32_t fewestDigits = 5;
constexpr std::size_t fewestDialledDigits = 7;
constexpr std::size_t mostNationalDigits = 17;

std::string_view withoutPlus(std::string_view digits) {
  if (digits.starts_with('+')) digits.remove_prefix(1);
  return digits;
}

std::string_view withoutZeros(std::string_view digits) {
  digits.remove_prefix(std::min(digits.find_first_not_of('0'), digits.size()));
  return digits;
}

bool endAlike(const PackedDigits& a, const PackedDigits& b) {
  return a.endsAlike(b, fewestDigits) && a.endsAlike(b);
}

}  // namespace

ComparableNumber::ComparableNumber(std::string_view text)
    : digits(withoutZeros(withoutPlus(text))),
      zeros(static_cast<std::uint32_t>(withoutPlus(text).size() - digits.size())),
      hasPlus(text.starts_with('+')),
      // A country code follows the plus at once, or exactly two zeros.
      country(zeros == (hasPlus ? 0 : 2) ? Country::notAsked : Country::none) {}

std::string ComparableNumber::key(std::string_view text) {
  text = withoutPlus(text);
  return std::string(text.substr(text.size() - std::min<std::size_t>(text.size(), fewestDigits)));
}

bool ComparableNumber::isLike(const ComparableNumber& other) const {
  if (hasSameDigits(other)) return true;
  // Rules out almost every pair before the library has to be asked.
  if (!digits.endsAlike(other.digits, fewestDigits)) return false;
  if (namesCountry() && other.namesCountry()) {
    return countryCode == other.countryCode && endAlike(nationalNumber, other.nationalNumber);
  }
  if (namesCountry()) return isReachedBy(other);
  if (other.namesCountry()) return other.isReachedBy(*this);
  return isDomestic() && other.isDomestic() &&
         std::min(dialledDigits(), other.dialledDigits()) >= fewestDialledDigits &&
         digits.endsAlike(other.digits);
}

bool ComparableNumber::hasSameDigits(const ComparableNumber& other) const {
  return digits == other.digits && zeros == other.zeros && hasPlus == other.hasPlus;
}

bool ComparableNumber::isReachedBy(const ComparableNumber& withoutCountry) const {
  return withoutCountry.isDomestic() && (endAlike(nationalNumber, withoutCountry.digits) ||
                                         endAlike(dialledAtHome, withoutCountry.digits));
}

bool ComparableNumber::isDomestic() const {
  return !hasPlus && dialledDigits() <= mostNationalDigits;
}

bool ComparableNumber::askForCountry() const {
  country = Country::none;
  const auto number = PhoneNumberLibrary::shared().read("+" + digits.text());
  if (!number) return false;
  nationalNumber = PackedDigits(std::to_string(number->nationalNumber));
  dialledAtHome = PackedDigits(std::to_string(number->dialledAtHome));
  // A form that ends differently is useless: numbers that are alike must have the same key().
  if (!nationalNumber.endsAlike(digits, fewestDigits)) nationalNumber = PackedDigits();
  if (!dialledAtHome.endsAlike(digits, fewestDigits)) dialledAtHome = PackedDigits();
  countryCode = number->countryCode;
  country = Country::known;
  return true;
}

}  // namespace quenlet
