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

  friend bool operator==(const PhoneNumber&, const PhoneNumber&) = default;

 private:
  explicit PhoneNumber(std::string value) : text(std::move(value)) {}
  std::string text;
};

}  // namespace quenlet
