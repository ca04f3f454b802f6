#include "mecard/ContactRebuilder.h"

#include <numeric>
#include <utility>

#include "mecard/DonationVisitor.h"
#include "mecard/EmailAddressCollector.h"

namespace quenlet {

ContactRebuilder::ContactRebuilder(std::shared_ptr<const DonationValues> donations,
                                   std::optional<PersonNameComponents> curatedName,
                                   std::vector<std::string> curatedEmailAddresses)
    : all(std::move(donations)),
      remaining(all->size()),
      name(std::move(curatedName)),
      emailAddresses(std::move(curatedEmailAddresses)) {
  std::iota(remaining.begin(), remaining.end(), 0);
}

CollectedSuppressionResult ContactRebuilder::collectSuppression() const {
  CollectedSuppressionResult suppression(name);
  for (std::size_t place = 0; place < all->size(); ++place) {
    prefetchDonation(*all, place);
    suppression.collect(*(*all)[place]);
  }
  return suppression;
}

bool ContactRebuilder::isLeftOut(const DonationValue& donation,
                                 const CollectedSuppressionResult& suppression,
                                 EmailAddressCollector& collector, CardReasons* reasons) {
  if (!suppression.keeps(donation)) {
    if (reasons) reasons->note(donation, suppression.explain(donation));
    return true;
  }
  const std::string* own = collector.repeatedAddress(donation);
  if (own && reasons) reasons->note(donation, {CardDecision::ownEmailAddress, nullptr, *own});
  return own != nullptr;
}

// All stages in one pass: with many donations, much of the time goes by until each one and its
// place among the keys have come from memory.
Contact ContactRebuilder::buildNewContact(CardReasons* reasons) {
  constexpr std::size_t soon = 6;  // later than prefetchDonation(), which brings the key
  const CollectedSuppressionResult suppression = collectSuppression();
  EmailAddressCollector collector(emailAddresses);
  DonationVisitor visitor(all, remaining.size(), reasons);
  std::erase_if(remaining, [&](std::uint32_t place) {
    prefetchDonation(*all, place);
    if (place + soon < all->size()) visitor.expect(*(*all)[place + soon]);
    const DonationValue& donation = *(*all)[place];
    if (isLeftOut(donation, suppression, collector, reasons)) return true;
    donation.acceptDonationValueVisitor(visitor);
    return false;
  });
  return std::move(visitor).takeContact();
}

DonationValues ContactRebuilder::filteredDonations() const {
  DonationValues donations;
  for (const std::uint32_t place : remaining) donations.push_back((*all)[place]);
  return donations;
}

}  // namespace quenlet
