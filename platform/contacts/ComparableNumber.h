#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "platform/contacts/PackedDigits.h"

namespace quenlet {

// A phone number's digits, made ready to be compared with those of many others. A comparison costs
// a few steps; the telephone library is asked once a number, when a number that names its country
// first meets one that ends as it does. Copyable; one thread at a time.
//
//   both name their country    → it is the same, and one national number ends with the other
//   one of them does           → its national number, or what is dialled for it at home, ends with
//                                the other number or is its end
//   neither                    → one ends with the other
//
// A country is named by '+', or by "00" where the library knows what follows. Zeros at the front
// are not compared. Numbers that are compared by their ends have five digits or more, seven when no
// country is named, and no more than numbers can have. Equal digits are alike whatever they are.
class ComparableNumber final {
 public:
  // At most 20 ASCII digits, with or without a leading '+'.
  explicit ComparableNumber(std::string_view digits);

  // The last five digits, or all when there are fewer: the same for all numbers that are alike.
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
