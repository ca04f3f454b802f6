#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "client/DonationIdentifier.h"
#include "model/DonationValue.h"
#include "platform/contacts/VCard.h"

namespace quenlet {

// Turns cards into the donations of one donor: the name with the nickname, e-mail addresses, phone
// numbers, postal addresses and the image. One thread.
class CardDonor final {
 public:
  struct Terms final {
    std::string bundleIdentifier;
    std::optional<std::string> clusterIdentifier;
    Date donationDate;
    Date expirationDate;
  };

  explicit CardDonor(Terms donationTerms) : terms(std::move(donationTerms)) {}

  // `fileName` identifies cards without a UID.
  void addFile(const std::vector<VCard>& cards, const std::string& fileName);
  [[nodiscard]] const DonationValues& donations() const { return values; }
  // The number of donations that will replace an earlier one with the same identifier.
  [[nodiscard]] std::size_t countRepeated() const;

 private:
  void addCard(const Contact& card, const DonationIdentifier& identifier);
  [[nodiscard]] DonationOrigin origin(std::string donationIdentifier) const;

  const Terms terms;
  DonationValues values;
};

}  // namespace quenlet
