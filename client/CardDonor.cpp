#include "client/CardDonor.h"

#include "client/Conversion.h"

namespace quenlet {

void CardDonor::addFile(const std::vector<VCard>& cards, const std::string& file) {
  for (const VCard& card : cards) {
    addCard(card.contact, DonationIdentifier(terms.bundleIdentifier, card, file, pseudonyms));
  }
}

void CardDonor::addCard(const Contact& card, const DonationIdentifier& identifier) {
  Name name = Conversion::name(PersonNameComponents::componentsForContact(card));
  if (name != Name{}) add(std::move(name), identifier.ofProperty("name"));
  std::size_t position = 0;
  for (const auto& entry : card.emailAddresses()) {
    add(Email{entry->value, entry->label}, identifier.ofEntry("email", ++position));
  }
  position = 0;
  for (const auto& entry : card.phoneNumbers()) {
    add(Phone{entry->value.stringValue(), entry->label}, identifier.ofEntry("phone", ++position));
  }
  position = 0;
  for (const auto& entry : card.postalAddresses()) {
    add(Postal{Conversion::address(entry->value), AddressStyle::mailing, entry->label},
        identifier.ofEntry("address", ++position));
  }
  if (card.imageData()) add(Image{*card.imageData()}, identifier.ofProperty("image"));
}

void CardDonor::add(decltype(Donation::content) content, std::string donationIdentifier) {
  donations.push_back({std::move(content), terms.bundleIdentifier, std::move(donationIdentifier),
                       terms.clusterIdentifier, terms.donationDate, terms.expirationDate});
}

}  // namespace quenlet
