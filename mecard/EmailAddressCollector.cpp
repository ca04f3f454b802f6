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
      foldedHashes.insert(ComparisonKey::hashOf(canonicalKey(lowercased(normalized))));
    }
  }
}

bool EmailAddressCollector::collects(const DonationValue& donation) const {
  if (donation.kind() != DonationKind::emailAddress || blacklist.empty()) return true;
  // Equal addresses have equal keys, so few addresses need parsing.
  const std::optional<ComparisonKey> key = donation.entryKey();
  if (!key || !foldedHashes.contains(key->hash)) return true;
  return !blacklist.contains(canonicalKey(donation.emailEntry()->value));
}

}  // namespace quenlet
