#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "platform/contacts/PackedDigits.h"

namespace quenlet {

// A phone number's digits, prepared for comparison with many others, which takes a few steps each.
// The telephone library is asked at most once per number: when a number that names its country
// first meets one with the same last digits. Copyable; one thread at a time.
//
//   country    alike when                                          example
//   both       it is the same, and one national number ends        +49 30 1234567, 0049 30 1234567
//              with the other
//   one        its national number, or the form dialled within     +49 30 1234567, 030 1234567
//              the country, ends with the other number or is       +7 495 1234567, 8 495 1234567
//              its end
//   neither    one ends with the other                             030 1234567, 1234567
//
// A country is named by '+', or by "00" where the library knows the number that follows. Leading
// zeros are ignored. Ends are compared only from five digits on, from seven (zeros included) when
// no country is named, and only up to the length of real numbers. Equal digits are always alike.
class ComparableNumber final {
 public:
  // At most 20 ASCII digits, with or without a leading '+'.
  explicit ComparableNumber(std::string_view digits);

  // The last five digits, or all when there are fewer. Numbers that are alike have the same key.
  [[nodiscard]] static std::string key(std::string_view digits);

  // Symmetric, not transitive.
  [[nodiscard]] bool isLike(const ComparableNumber& other) const;

 private:
  enum class Country : std::uint8_t { none, notAsked, known };

  [[nodiscard]] bool hasSameDigits(const ComparableNumber& other) const;
  [[nodiscard]] bool namesCountry() const {
    return country == Country::notAsked ? askForCountry() : country == Country::known;
  }
  bool askForCountry() const;  // the library
  [[nodiscard]] bool isReachedBy(const ComparableNumber& withoutCountry) const;
  [[nodiscard]] bool isDomestic() const;
  [[nodiscard]] std::size_t dialledDigits() const { return zeros + digits.size(); }

  PackedDigits digits;
  std::uint32_t zeros = 0;
  bool hasPlus = false;
  mutable Country country;
  mutable std::int32_t countryCode = 0;
  mutable PackedDigits nationalNumber;
  mutable PackedDigits dialledAtHome;
};

}  // namespace quenlet
