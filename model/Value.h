#pragma once

#include <memory>
#include <optional>
#include <string>
#include <variant>

#include "platform/contacts/PersonNameComponents.h"
#include "platform/contacts/PostalAddress.h"
#include "platform/foundation/PropertyList.h"

namespace quenlet {

inline constexpr char DonationValueNameComponentsKey[] = "nameComponents";
inline constexpr char DonationValueEmailAddressKey[] = "emailAddress";
inline constexpr char DonationValuePhoneNumberKey[] = "phoneNumber";
inline constexpr char DonationValuePostalAddressKey[] = "postalAddress";
inline constexpr char DonationValueImageDataKey[] = "imageData";
inline constexpr char DonationValueLabelKey[] = "label";
inline constexpr char DonationValueStyleKey[] = "style";
inline constexpr char DonationValueOriginKey[] = "origin";

// The content of a donation without its origin: one of five kinds. A value type.
//
// Two values are equal when their kinds and all their fields are. Text is compared by canonical
// equivalence only: letter case, blanks and labels count. An image equals nothing, not even itself.
class Value final {
 public:
  struct EmailAddress final {
    std::string address;
    std::string label;
  };
  struct PhoneNumber final {
    std::string number;  // as its text, not normalised
    std::string label;
  };
  struct PostalAddress final {
    quenlet::PostalAddress address;
    PostalAddressStyle style;
    std::string label;
  };
  struct ImageData final {
    std::shared_ptr<const std::string> bytes;
  };
  using Cases =
      std::variant<PersonNameComponents, EmailAddress, PhoneNumber, PostalAddress, ImageData>;

  [[nodiscard]] static Value name(PersonNameComponents components) {
    return Value(std::move(components));
  }
  [[nodiscard]] static Value emailAddress(std::string address, std::string label) {
    return Value(EmailAddress{std::move(address), std::move(label)});
  }
  [[nodiscard]] static Value phoneNumber(std::string number, std::string label) {
    return Value(PhoneNumber{std::move(number), std::move(label)});
  }
  [[nodiscard]] static Value postalAddress(quenlet::PostalAddress address, PostalAddressStyle style,
                                           std::string label) {
    return Value(PostalAddress{std::move(address), style, std::move(label)});
  }
  [[nodiscard]] static Value imageData(std::shared_ptr<const std::string> bytes) {
    return Value(ImageData{std::move(bytes)});
  }

  // Reads a value dictionary: the first of name, e-mail address, phone number and postal address
  // that it holds decides. E-mail addresses and phone numbers need a label. Never an image. Nothing
  // when no kind can be read.
  [[nodiscard]] static std::optional<Value> valueWithDictionary(
      const PropertyListDictionary& entries);

  explicit Value(Cases kindAndContent) : content(std::move(kindAndContent)) {}
  [[nodiscard]] const Cases& cases() const { return content; }

  friend bool operator==(const Value& a, const Value& b);

 private:
  Cases content;
};

}  // namespace quenlet
