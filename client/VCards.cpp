#include "quenlet/VCards.h"

#include <utility>

#include "client/CardDonor.h"
#include "client/CardFile.h"

namespace quenlet {

Result<VCardDonations> readVCards(const std::string& path, const DonationTerms& terms) {
  Result<VCards> read = CardFile::read(path);
  if (!read.ok()) return Result<VCardDonations>::failure(read.error());
  VCards file = std::move(read).takeValue();
  if (file.cards.empty()) return Result<VCardDonations>::failure(file.failures.front());
  VCardDonations found;
  for (const VCard& card : file.cards) found.skippedEntries += card.skippedEntries;
  CardDonor donor(terms, Pseudonyms::withoutSecret());
  donor.addFile(file.cards, CardFile::nameOf(path));
  found.donations = std::move(donor).takeDonations();
  found.failures = std::move(file.failures);
  return Result<VCardDonations>::success(std::move(found));
}

}  // namespace quenlet
