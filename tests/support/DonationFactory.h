#pragma once

#include "model/DonationValue.h"

// Short words for donated values: email("a@b.c", from("app", "id", "cluster")).
namespace quenlet {

inline DonationOrigin from(std::string bundle, std::string identifier,
                           std::optional<std::string> cluster = std::nullopt,
                           Date expires = Date::distantFuture()) {
  return {std::move(bundle), std::move(identifier), std::move(cluster), Date(1.5), expires};
}

inline DonationValuePtr email(std::string address, DonationOrigin origin = from("app", "email"),
                              std::string label = "home") {
  return DonationValue::donationValueWithEmailAddress(std::move(address), std::move(label),
                                                      std::move(origin));
}

inline DonationValuePtr phone(const std::string& number, DonationOrigin origin = from("app", "tel"),
                              std::string label = "home") {
  return DonationValue::donationValueWithPhoneNumber(*PhoneNumber::withStringValue(number),
                                                     std::move(label), std::move(origin));
}

inline DonationValuePtr named(PersonNameComponents name,
                              DonationOrigin origin = from("app", "name")) {
  return DonationValue::donationValueWithNameComponents(std::move(name), std::move(origin));
}

inline DonationValuePtr postal(PostalAddress address, DonationOrigin origin = from("app", "adr"),
                               PostalAddressStyle style = PostalAddressStyle::mailingAddress) {
  return DonationValue::donationValueWithPostalAddress(std::move(address), style, "home",
                                                       std::move(origin));
}

inline DonationValuePtr image(std::string bytes, DonationOrigin origin = from("app", "image")) {
  return DonationValue::donationValueWithImageData(std::move(bytes), std::move(origin));
}

inline std::shared_ptr<const DonationValues> listOf(DonationValues values) {
  return std::make_shared<const DonationValues>(std::move(values));
}

inline std::string identifiersOf(const DonationValues& values) {
  std::string identifiers;
  for (const DonationValuePtr& value : values) {
    if (!identifiers.empty()) identifiers += ' ';
    identifiers += value->decoded().origin.donationIdentifier;
  }
  return identifiers;
}

}  // namespace quenlet
