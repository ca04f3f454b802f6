#pragma once

#include <optional>
#include <unordered_set>

#include "mecard/NameSuppressionStatus.h"
#include "model/DonationValue.h"

namespace quenlet {

// Which donors are silenced, and whether donated names may be used at all. Collect every donation
// first, in the order of the list, then ask keeps() for each. A value type; one thread at a time.
// Does not own the donations, whose identifiers it holds.
//
// A donor whose name contradicts the curated one talks about somebody else: all that comes from the
// same cluster, or from the same app where the donation has no cluster, is left out.
class CollectedSuppressionResult final {
 public:
  using Identifiers = std::unordered_set<ComparisonKey, ComparisonKeyHash>;

  explicit CollectedSuppressionResult(const std::optional<PersonNameComponents>& curatedName);

  void collect(const DonationValue& donation);
  [[nodiscard]] bool keeps(const DonationValue& donation) const;

  [[nodiscard]] const NameSuppressionStatus& nameStatus() const { return status; }
  // Identifiers in the form in which they are compared.
  [[nodiscard]] const Identifiers& suppressedBundleIDs() const { return bundleIDs; }
  [[nodiscard]] const Identifiers& suppressedClusterIDs() const { return clusterIDs; }

 private:
  void suppressDonor(const DonationValue& donation);

  NameSuppressionStatus status;
  Identifiers bundleIDs;
  Identifiers clusterIDs;
};

}  // namespace quenlet
