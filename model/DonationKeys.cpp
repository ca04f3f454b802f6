#include "model/DonationKeys.h"

#include "platform/contacts/PostalAddressFormatter.h"
#include "platform/foundation/Text.h"

namespace quenlet {
namespace {

std::string folded(std::string_view text) { return canonicalKey(lowercased(text)); }

}  // namespace

Fingerprint DonationKeys::ofText(std::string_view text) {
  // ASCII is canonical as it stands.
  return Fingerprint::of(isASCII(text) ? text : std::string_view(canonicalKey(text)));
}

Fingerprint DonationKeys::ofFoldedText(std::string_view text) { return ofText(lowercased(text)); }

Fingerprint DonationKeys::ofPostalAddress(const PostalAddress& address) {
  const std::optional<std::string> line =
      PostalAddressFormatter::singleLineStringFromPostalAddress(address, CountryName::leftOut);
  return line ? ofFoldedText(*line) : Fingerprint();
}

Fingerprint SuppressionNameEquivalence::keyOf(const PersonNameComponents& name) {
  std::string key = "-";
  if (name.givenName) {
    const std::string given = folded(*name.givenName);
    // The size marks where one ends and the other begins.
    key = std::to_string(given.size()) + ":" + given;
  }
  if (name.familyName) key += "+" + folded(*name.familyName);
  return Fingerprint::of(key);
}

}  // namespace quenlet
