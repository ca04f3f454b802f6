#pragma once

#include <string>
#include <utility>
#include <vector>

#include "client/DonationIdentifier.h"
#include "platform/contacts/VCard.h"
#include "quenlet/Donation.h"
#include "quenlet/VCards.h"

namespace quenlet {

// Turns cards into the donations of one donor: the name with the nickname, e-mail addresses, phone
// numbers, postal addresses and the image. One thread.
class CardDonor final {
 public:
  CardDonor(DonationTerms donationTerms, const Pseudonyms& pseudonymsForIdentifiers)
      : terms(std::move(donationTerms)), pseudonyms(pseudonymsForIdentifiers) {}

  // `file`, such as its path, identifies cards without a UID.
  void addFile(const std::vector<VCard>& cards, const std::string& file);
  [[nodiscard]] std::vector<Donation> takeDonations() && { return std::move(donations); }

 private:
  void addCard(const Contact& card, const DonationIdentifier& identifier);
  void add(decltype(Donation::content) content, std::string donationIdentifier);

  const DonationTerms terms;
  const Pseudonyms pseudonyms;
  std::vector<Donation> donations;
};

}  // namespace quenlet
