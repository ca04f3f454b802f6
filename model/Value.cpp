#include "model/Value.h"

#include <algorithm>

#include "platform/foundation/Text.h"

namespace quenlet {
namespace {

// The entry under `key` when it is a dictionary from string to string, else null.
const PropertyListDictionary* findStringDictionary(const PropertyListDictionary& entries,
                                                   std::string_view key) {
  const PropertyListDictionary* found = findDictionary(entries, key);
  if (!found) return nullptr;
  const bool onlyStrings = std::all_of(found->begin(), found->end(),
                                       [](const auto& entry) { return entry.second.string(); });
  return onlyStrings ? found : nullptr;
}

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
    return name(PersonNameComponents::componentsWithDictionary(*components));
  }
  const std::string* label = findString(entries, DonationValueLabelKey);
  if (const std::string* address = findString(entries, DonationValueEmailAddressKey)) {
    if (!label) return std::nullopt;
    return emailAddress(*address, *label);
  }
  if (const std::string* number = findString(entries, DonationValuePhoneNumberKey)) {
    if (!label) return std::nullopt;
    return phoneNumber(*number, *label);
  }
  if (const auto* fields = findStringDictionary(entries, DonationValuePostalAddressKey)) {
    auto address = quenlet::PostalAddress::postalAddressWithDictionaryRepresentation(*fields);
    if (!address) return std::nullopt;
    return postalAddress(std::move(*address), PostalAddressStyle{}, label ? *label : std::string());
  }
  return std::nullopt;
}

bool operator==(const Value& a, const Value& b) {
  return std::visit(Equality{}, a.content, b.content);
}

}  // namespace quenlet
