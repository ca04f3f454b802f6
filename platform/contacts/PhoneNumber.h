#pragma once

#include "platform/contacts/ComparableNumber.h"

#include <optional>
#include <string>
#include <string_view>

namespace quenlet {

// A phone number, kept as the text that was given, which holds a plausible number. Immutable.
class PhoneNumber final {
 public:
  // `initWithStringValue:`. Accepts what people and SIM cards write: digits of any script, a
  // leading +, blanks, dashes, dots, slashes, brackets, "tel:", an extension. Nothing for text that
  // holds no plausible number. ASCII text of ordinary length needs no library.
  [[nodiscard]] static std::optional<PhoneNumber> withStringValue(std::string_view text);

  // Whether withStringValue() would give a number.
  [[nodiscard]] static bool isNumber(std::string_view text);

  [[nodiscard]] const std::string& stringValue() const { return text; }
  // The digits as ASCII, with a leading '+' kept: "+4930123456". Without "tel:" and extension.
  [[nodiscard]] std::string digits() const;

  // What isLikePhoneNumber() compares. Numbers that are alike have the same key.
  struct Likeness final {
    std::string key;
    ComparableNumber number;
  };

  // `isLikePhoneNumber:`. Whether both texts most likely reach the same telephone: symmetric, but
  // not transitive. A missing country or area code and a prefix that is dialled within a country
  // make no difference, as ComparableNumber says; a short number is like its equal only. The
  // extension, or the digits dialled after a pause, must be the same. Without the telephone
  // library, a number that begins with '+' is like its equal only.
  [[nodiscard]] bool isLikePhoneNumber(const PhoneNumber& other) const;
  // Compute it once to compare one number with many.
  [[nodiscard]] Likeness likeness() const;

  friend bool operator==(const PhoneNumber&, const PhoneNumber&) = default;

 private:
  explicit PhoneNumber(std::string value) : text(std::move(value)) {}
  std::string text;
};

}  // namespace quenlet
