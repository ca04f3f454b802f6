#include "analytics/ValueMatching.h"

#include "platform/contacts/PostalAddressFormatter.h"
#include "platform/foundation/NumberText.h"
#include "platform/foundation/Text.h"

namespace quenlet {

Matching<AnyCandidate> matchingOf(const std::string& emailAddress) {
  return {canonicalKey(emailAddress), {}};
}

Matching<ComparableNumber> matchingOf(const PhoneNumber& number) {
  const auto [key, candidate] = number.likeness();
  return {key, candidate};
}

// All fields, each after its size, so that different addresses never share a key.
Matching<AnyCandidate> matchingOf(const PostalAddress& address) {
  std::string key;
  for (const std::string* field :
       {&address.street, &address.subLocality, &address.city, &address.subAdministrativeArea,
        &address.state, &address.postalCode, &address.country, &address.isoCountryCode}) {
    const std::string canonical = canonicalKey(*field);
    appendNumber(key, canonical.size());
    key.append(":").append(canonical);
  }
  return {key, {}};
}

std::string describedValue(const std::string& emailAddress) { return emailAddress; }

std::string describedValue(const PhoneNumber& number) { return number.stringValue(); }

std::string describedValue(const PostalAddress& address) {
  return PostalAddressFormatter::singleLineStringFromPostalAddress(address, CountryName::included)
      .value_or(std::string());
}

}  // namespace quenlet
