#include "tools/owner/HeldDonations.h"

#include <utility>

namespace quenlet {

HeldDonations::HeldDonations(std::shared_ptr<const DonationValues> agentsList)
    : all(std::move(agentsList)) {
  for (const DonationValuePtr& value : *all) byKey.emplace(value->donationKey(), value);
}

DonationValuePtr HeldDonations::inPlaceOf(const DonationValue& value) const {
  const auto found = byKey.find(value.donationKey());
  return found == byKey.end() ? nullptr : found->second;
}

bool HeldDonations::hasGift(const DonationValue& value) const {
  const DonationValuePtr held = inPlaceOf(value);
  return held && held->bundleKey() == value.bundleKey() &&
         held->decoded().origin.donationDate == value.decoded().origin.donationDate;
}

DonationKeySet HeldDonations::keysFrom(const DonatedFile& file,
                                       const std::vector<JournalEntry>& former) const {
  DonationKeySet keys;
  if (file.hasBundleToItself()) {
    const Fingerprint bundle = DonationKeys::ofText(file.bundleIdentifier);
    for (const DonationValuePtr& value : *all) {
      if (value->bundleKey() == bundle) keys.insert(value->donationKey());
    }
    return keys;
  }
  for (const JournalEntry& entry : former) {
    for (const DonatedFile& before : entry.files) {
      if (before.pseudonym != file.pseudonym || before.bundleIdentifier != file.bundleIdentifier) {
        continue;
      }
      for (const DonationValuePtr& gift : before.donated) {
        if (hasGift(*gift)) keys.insert(gift->donationKey());
      }
    }
  }
  return keys;
}

}  // namespace quenlet
