#include "mecard/EmailAddressCollector.h"

#include "platform/contacts/EmailAddress.h"
#include "platform/foundation/Text.h"

namespace quenlet {

EmailAddressCollector::EmailAddressCollector(
    const std::vector<std::string>& blacklistedEmailAddresses) {
  for (const std::string& curated : blacklistedEmailAddresses) {
    for (const std::string& alias : EmailAddressExpandAliasedDomains(curated)) {
      const std::string normalized = EmailAddressNormalize(alias);
      blacklist.emplace(canonicalKey(normalized), curated);
      foldedKeys.insert(DonationKeys::ofFoldedText(normalized));
    }
  }
}

const std::string* EmailAddressCollector::repeatedAddress(const DonationValue& donation) {
  repeated = nullptr;
  donation.acceptDonationValueVisitor(*this);
  return repeated;
}

void EmailAddressCollector::visitEmailAddress(const DonationValue& donation) {
  // Equal addresses have equal keys, so few addresses need parsing.
  if (!foldedKeys.contains(donation.contentKey())) return;
  const DecodedDonation decoded = donation.decoded();
  const auto& email = std::get<Value::EmailAddress>(decoded.content);
  const auto found = blacklist.find(canonicalKey(email.address));
  if (found != blacklist.end()) repeated = &found->second;
}

}  // namespace quenlet
