#pragma once

#include <string>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "model/DonationValue.h"
#include "platform/foundation/KeyedHash.h"

namespace quenlet {

// Finds the donations that repeat one of the owner's curated e-mail addresses. Lives for one
// rebuild; one thread at a time.
//
// Curated addresses count in normal form and under all aliases of their domains. A donated address
// is looked up as it was donated, so a curated address in another letter case stays.
class EmailAddressCollector final : public DonationValueVisitor {
 public:
  explicit EmailAddressCollector(const std::vector<std::string>& blacklistedEmailAddresses);

  // The curated address that `donation` repeats, valid for the collector's life; null for anything
  // else, which stays.
  [[nodiscard]] const std::string* repeatedAddress(const DonationValue& donation);

  void visitEmailAddress(const DonationValue& donation) override;

 private:
  // Each alias of a curated address, with that address.
  std::unordered_map<std::string, std::string, TextHash> blacklist;
  // Their keys as content, which ignore letter case.
  std::unordered_set<Fingerprint, FingerprintHash> foldedKeys;
  const std::string* repeated = nullptr;
};

}  // namespace quenlet
