#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "quenlet/Date.h"
#include "quenlet/Donation.h"
#include "quenlet/Error.h"
#include "quenlet/Export.h"
#include "quenlet/Result.h"

namespace quenlet {

// What all donations of a card have in common. A value type.
struct DonationTerms final {
  std::string bundleIdentifier = {};
  std::optional<std::string> clusterIdentifier = {};
  Date donationDate = Date::now();
  Date expirationDate = Date::now().addingSeconds(Donation::standardLifetimeSeconds);
};

// What was found in a file of vCards.
struct VCardDonations final {
  std::vector<Donation> donations = {};
  // One for each card that cannot be read. They name the file and the line, and quote nothing.
  std::vector<ErrorPtr> failures = {};
  // Entries without a usable value, such as a phone number that is not one.
  std::size_t skippedEntries = 0;
};

// Reads vCards 2.1, 3.0 or 4.0 from the file at `path`, or from the standard input for "-": of each
// card the name, e-mail addresses, phone numbers, postal addresses and the image.
//
// Donation identifiers are made of the bundle, the card's UID and the property, as in
// "com.example.mail:4fbe8971-0d1f-4f35-9a52-6d0f3f6b1c01:email:2"; without a UID, of the file's
// name and the card's place in it. A card that was edited thus replaces its former donations. Two
// cards with the same UID give donations with the same identifiers. Digests stand for the file's
// name, and for a UID that is not a UUID: either may be personal, and agents log identifiers.
//
// An error when the file cannot be read or holds no readable card.
[[nodiscard]] QUENLET_API Result<VCardDonations> readVCards(const std::string& path,
                                                            const DonationTerms& terms);

}  // namespace quenlet
