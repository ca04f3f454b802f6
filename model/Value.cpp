#include "model/Value.h"

#include "platform/foundation/Text.h"

namespace quenlet {
namespace {

struct Equality final {
  bool operator()(const PersonNameComponents& a, const PersonNameComponents& b) const {
    return a == b;
  }
  bool operator()(const Value::EmailAddress& a, const Value::EmailAddress& b) const {
    return canonicallyEqual(a.address, b.address) && canonicallyEqual(a.label, b.label);
  }
  bool operator()(const Value::PhoneNumber& a, const Value::PhoneNumber& b) const {
    return canonicallyEqual(a.number, b.number) && canonicallyEqual(a.label, b.label);
  }
  bool operator()(const Value::PostalAddress& a, const Value::PostalAddress& b) const {
    return a.address == b.address && a.style == b.style && canonicallyEqual(a.label, b.label);
  }
  // Images, and values of different kinds.
  template <typename A, typename B>
  bool operator()(const A&, const B&) const {
    return false;
  }
};

}  // namespace

std::optional<Value> Value::valueWithDictionary(const PropertyListDictionary& entries) {
  if (const auto* components = findStringDictionary(entries, DonationValueNameComponentsKey)) {
    return Value(PersonNameComponents::componentsWithDictionary(*components));
  }
  const std::string* label = findString(entries, DonationValueLabelKey);
  if (const std::string* address = findString(entries, DonationValueEmailAddressKey)) {
    return label ? std::optional(Value(EmailAddress{*address, *label})) : std::nullopt;
  }
  if (const std::string* number = findString(entries, DonationValuePhoneNumberKey)) {
    return label ? std::optional(Value(PhoneNumber{*number, *label})) : std::nullopt;
  }
  if (const auto* fields = findStringDictionary(entries, DonationValuePostalAddressKey)) {
    auto address = quenlet::PostalAddress::postalAddressWithDictionaryRepresentation(*fields);
    if (!address) return std::nullopt;
    return Value(PostalAddress{*std::move(address), {}, label ? *label : std::string()});
  }
  return std::nullopt;
}

bool operator==(const Value& a, const Value& b) {
  return std::visit(Equality{}, a.content, b.content);
}

}  // namespace quenlet
