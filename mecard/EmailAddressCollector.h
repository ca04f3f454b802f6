#pragma once

#include <string>
#include <unordered_set>
#include <vector>

#include "model/DonationValue.h"
#include "platform/foundation/KeyedHash.h"

namespace quenlet {

// Finds the donations that repeat one of the owner's curated e-mail addresses. Lives for one
// rebuild; one thread at a time.
//
// The curated addresses are taken under all aliases of their domains, in normal form; a donated
// address is looked up as it was donated, so that another letter case of a curated address stays.
class EmailAddressCollector final {
 public:
  explicit EmailAddressCollector(const std::vector<std::string>& blacklistedEmailAddresses);

  // Whether `donation` goes on: it is anything but a blacklisted address.
  [[nodiscard]] bool collects(const DonationValue& donation) const;

 private:
  std::unordered_set<std::string, TextHash> blacklist;
  // The blacklist as records have it in their keys, where letter case does not count.
  std::unordered_set<std::uint32_t> foldedHashes;
};

}  // namespace quenlet
