#pragma once

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

  [[nodiscard]] const std::string& stringValue() const { return text; }
  // The digits as ASCII, with a leading '+' kept: "+4930123456". Without "tel:" and extension.
  [[nodiscard]] std::string digits() const;

  // `isLikePhoneNumber:`. Whether both texts most likely reach the same telephone: symmetric, but
  // not transitive. Digits alone decide when they are equal, when one number has fewer than seven
  // (a short number is like its equal only) and when the last seven differ. Otherwise the telephone
  // library does, on first use: a missing country or area code and a prefix that is dialled within
  // a country make no difference. An extension, or what is dialled after a pause, has to be the
  // same on both sides. Without the library only equal digits are alike.
  [[nodiscard]] bool isLikePhoneNumber(const PhoneNumber& other) const;
  // The last seven ASCII digits, or all when there are fewer: numbers that are like each other
  // share it.
  [[nodiscard]] std::string likenessKey() const;

  friend bool operator==(const PhoneNumber&, const PhoneNumber&) = default;

 private:
  explicit PhoneNumber(std::string value) : text(std::move(value)) {}
  std::string text;
};

}  // namespace quenlet
