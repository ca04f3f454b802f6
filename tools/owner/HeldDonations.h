#pragma once

#include <memory>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "tools/owner/JournalEntry.h"

namespace quenlet {

using DonationKeySet = std::unordered_set<Fingerprint, FingerprintHash>;

// What the agent held at one moment, by identifier. Immutable.
class HeldDonations final {
 public:
  explicit HeldDonations(std::shared_ptr<const DonationValues> agentsList);

  // In the agent's order.
  [[nodiscard]] const DonationValues& list() const { return *all; }
  // What is held under the identifier of `value`, or null.
  [[nodiscard]] DonationValuePtr inPlaceOf(const DonationValue& value) const;
  // Whether that is `value`: given by the same donor at the same time. The expiration date does not
  // count, since a donor may have moved it.
  [[nodiscard]] bool hasGift(const DonationValue& value) const;
  // The keys of what is held from a file: all of the bundle that it has to itself, of another one
  // what the file gave under it by the `former` donations.
  [[nodiscard]] DonationKeySet keysFrom(const DonatedFile& file,
                                        const std::vector<JournalEntry>& former) const;

 private:
  const std::shared_ptr<const DonationValues> all;
  std::unordered_map<Fingerprint, DonationValuePtr, FingerprintHash> byKey;
};

}  // namespace quenlet
