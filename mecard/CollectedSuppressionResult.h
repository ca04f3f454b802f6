#pragma once

#include <optional>
#include <unordered_set>

#include "mecard/NameSuppressionStatus.h"
#include "model/DonationValue.h"

namespace quenlet {

// Decides which donors are silenced, and whether donated names may be used at all. Collect every
// donation first, in the order of the list, then ask keeps() for each. Does not own the donations,
// whose identifiers it refers to. A value type; one thread at a time.
//
// A donor whose name contradicts the curated one talks about somebody else: everything from the
// same cluster, or from the same app if the donation has no cluster, is left out.
class CollectedSuppressionResult final {
 public:
  using Identifiers = std::unordered_set<ComparisonKey, ComparisonKeyHash>;

  explicit CollectedSuppressionResult(const std::optional<PersonNameComponents>& curatedName);

  void collect(const DonationValue& donation);
  [[nodiscard]] bool keeps(const DonationValue& donation) const;

  [[nodiscard]] const NameSuppressionStatus& nameStatus() const { return status; }
  // Identifiers in canonical form.
  [[nodiscard]] const Identifiers& suppressedBundleIDs() const { return bundleIDs; }
  [[nodiscard]] const Identifiers& suppressedClusterIDs() const { return clusterIDs; }

 private:
  void suppressDonor(const DonationValue& donation);

  NameSuppressionStatus status;
  Identifiers bundleIDs;
  Identifiers clusterIDs;
};

}  // namespace quenlet
