#include "mecard/EmailAddressCollector.h"

#include "platform/contacts/EmailAddress.h"
#include "platform/foundation/Text.h"

namespace quenlet {

EmailAddressCollector::EmailAddressCollector(
    const std::vector<std::string>& blacklistedEmailAddresses) {
  for (const std::string& curated : blacklistedEmailAddresses) {
    for (const std::string& alias : EmailAddressExpandAliasedDomains(curated)) {
      blacklist.insert(canonicalKey(EmailAddressNormalize(alias)));
    }
  }
}

void EmailAddressCollector::visit(const DonationValue& donation) {
  donation.acceptDonationValueVisitor(*this);
}

void EmailAddressCollector::visitDonationValue(const DonationValue& donation,
                                               const PersonNameComponents&) {
  collected.push_back(donation.shared_from_this());
}

void EmailAddressCollector::visitDonationValue(const DonationValue& donation, const std::string&,
                                               const std::string&) {
  if (!blacklist.empty() && blacklist.contains(donation.keys().emailAddress)) return;
  collected.push_back(donation.shared_from_this());
}

void EmailAddressCollector::visitDonationValue(const DonationValue& donation, const PhoneNumber&,
                                               const std::string&) {
  collected.push_back(donation.shared_from_this());
}

void EmailAddressCollector::visitDonationValue(const DonationValue& donation, const PostalAddress&,
                                               PostalAddressStyle, const std::string&) {
  collected.push_back(donation.shared_from_this());
}

void EmailAddressCollector::visitDonationValue(const DonationValue& donation,
                                               const std::shared_ptr<const std::string>&) {
  collected.push_back(donation.shared_from_this());
}

}  // namespace quenlet
