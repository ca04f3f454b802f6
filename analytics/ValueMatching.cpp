#include "analytics/ValueMatching.h"

#include "platform/contacts/PostalAddressFormatter.h"
#include "platform/foundation/Text.h"

namespace quenlet {

Matching<AnyCandidate> matchingOf(const std::string& emailAddress) {
  return {canonicalKey(emailAddress), {}};
}

Matching<ComparableNumber> matchingOf(const PhoneNumber& number) {
  const auto [key, candidate] = number.likeness();
  return {key, candidate};
}

Matching<AnyCandidate> matchingOf(const PostalAddress& address) { return {address.key(), {}}; }

std::string describedValue(const std::string& emailAddress) { return emailAddress; }

std::string describedValue(const PhoneNumber& number) { return number.stringValue(); }

std::string describedValue(const PostalAddress& address) {
  return PostalAddressFormatter::singleLineStringFromPostalAddress(address, CountryName::included)
      .value_or(std::string());
}

}  // namespace quenlet
