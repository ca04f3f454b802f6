#include "model/DonationKeys.h"

#include "platform/contacts/PostalAddressFormatter.h"
#include "platform/foundation/Text.h"

namespace quenlet {
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

}  // namespace quenlet
