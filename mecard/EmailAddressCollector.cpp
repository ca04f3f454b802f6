#include "mecard/EmailAddressCollector.h"

#include "platform/contacts/EmailAddress.h"
#include "platform/foundation/Text.h"

namespace quenlet {

EmailAddressCollector::EmailAddressCollector(
    const std::vector<std::string>& blacklistedEmailAddresses) {
  for (const std::string& curated : blacklistedEmailAddresses) {
    for (const std::string& alias : EmailAddressExpandAliasedDomains(curated)) {
      const std::string normalized = EmailAddressNormalize(alias);
      blacklist.insert(canonicalKey(normalized));
      foldedKeys.insert(DonationKeys::ofFoldedText(normalized));
    }
  }
}

bool EmailAddressCollector::collects(const DonationValue& donation) {
  isBlacklisted = false;
  donation.acceptDonationValueVisitor(*this);
  return !isBlacklisted;
}

void EmailAddressCollector::visitEmailAddress(const DonationValue& donation) {
  // Equal addresses have equal keys, so few addresses need parsing.
  if (!foldedKeys.contains(donation.contentKey())) return;
  const DecodedDonation decoded = donation.decoded();
  const auto& email = std::get<Value::EmailAddress>(decoded.content);
  isBlacklisted = blacklist.contains(canonicalKey(email.address));
}

}  // namespace quenlet
