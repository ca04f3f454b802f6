#pragma once

#include "platform/contacts/ComparableNumber.h"

#include <optional>
#include <string>
#include <string_view>

namespace quenlet {

// A phone number as its text, unchanged; the text holds a plausible number. Immutable.
class PhoneNumber final {
 public:
  // `initWithStringValue:`. Takes what people and SIM cards write: digits of any script, a leading
  // +, blanks, dashes, dots, slashes, brackets, "tel:", an extension. Nothing for text that holds
  // no plausible number. ASCII text of ordinary length needs no library.
  [[nodiscard]] static std::optional<PhoneNumber> withStringValue(std::string_view text);

  // Whether that would give a number.
  [[nodiscard]] static bool isNumber(std::string_view text);

  [[nodiscard]] const std::string& stringValue() const { return text; }
  // The digits as ASCII, with a leading '+' kept: "+4930123456". Without "tel:" and extension.
  [[nodiscard]] std::string digits() const;

  // What likeness is decided by: numbers that are alike share the key.
  struct Likeness final {
    std::string key;
    ComparableNumber number;
  };

  // `isLikePhoneNumber:`. Whether both texts most likely reach the same telephone: symmetric, but
  // not transitive. A missing country or area code and a prefix that is dialled within a country
  // make no difference, as ComparableNumber says; a short number is like its equal only. An
  // extension, or what is dialled after a pause, has to be the same on both sides. Without the
  // telephone library, a number that begins with '+' is like its equal only.
  [[nodiscard]] bool isLikePhoneNumber(const PhoneNumber& other) const;
  // For whoever compares one number with many.
  [[nodiscard]] Likeness likeness() const;

  friend bool operator==(const PhoneNumber&, const PhoneNumber&) = default;

 private:
  explicit PhoneNumber(std::string value) : text(std::move(value)) {}
  std::string text;
};

}  // namespace quenlet
