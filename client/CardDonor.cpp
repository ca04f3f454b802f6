#include "client/CardDonor.h"

#include <set>
#include <string>
#include <utility>

namespace quenlet {

void CardDonor::addFile(const std::vector<VCard>& cards, const std::string& fileName) {
  for (const VCard& card : cards) {
    addCard(card.contact, DonationIdentifier(terms.bundleIdentifier, card, fileName));
  }
}

std::size_t CardDonor::countRepeated() const {
  std::set<std::string> identifiers;
  for (const DonationValuePtr& value : values) {
    identifiers.insert(value->decoded().origin.donationIdentifier);
  }
  return values.size() - identifiers.size();
}

void CardDonor::addCard(const Contact& card, const DonationIdentifier& identifier) {
  const PersonNameComponents name = PersonNameComponents::componentsForContact(card);
  if (name != PersonNameComponents{}) {
    values.push_back(DonationValue::donationValueWithNameComponents(
        name, origin(identifier.ofProperty("name"))));
  }
  std::size_t position = 0;
  for (const auto& entry : card.emailAddresses()) {
    values.push_back(DonationValue::donationValueWithEmailAddress(
        entry->value, entry->label, origin(identifier.ofEntry("email", ++position))));
  }
  position = 0;
  for (const auto& entry : card.phoneNumbers()) {
    values.push_back(DonationValue::donationValueWithPhoneNumber(
        entry->value, entry->label, origin(identifier.ofEntry("phone", ++position))));
  }
  position = 0;
  for (const auto& entry : card.postalAddresses()) {
    values.push_back(DonationValue::donationValueWithPostalAddress(
        entry->value, PostalAddressStyle::mailingAddress, entry->label,
        origin(identifier.ofEntry("address", ++position))));
  }
  if (card.imageData()) {
    values.push_back(DonationValue::donationValueWithImageData(
        *card.imageData(), origin(identifier.ofProperty("image"))));
  }
}

DonationOrigin CardDonor::origin(std::string donationIdentifier) const {
  return {terms.bundleIdentifier, std::move(donationIdentifier), terms.clusterIdentifier,
          terms.donationDate, terms.expirationDate};
}

}  // namespace quenlet
