#pragma once

#include <optional>
#include <string>
#include <unordered_set>

#include "mecard/NameSuppressionStatus.h"
#include "model/DonationValue.h"

namespace quenlet {

// Which donors are silenced, and whether donated names may be used at all. Collect every donation
// first, in the order of the list, then ask keeps() for each. A value type; one thread at a time.
//
// A donor whose name contradicts the curated one talks about somebody else: all that comes from the
// same cluster, or from the same app where the donation has no cluster, is left out.
class CollectedSuppressionResult final {
 public:
  explicit CollectedSuppressionResult(const std::optional<PersonNameComponents>& curatedName);

  void collect(const DonationValue& donation);
  [[nodiscard]] bool keeps(const DonationValue& donation) const;

  [[nodiscard]] const NameSuppressionStatus& nameStatus() const { return status; }
  // Identifiers in the form in which they are compared.
  [[nodiscard]] const std::unordered_set<std::string>& suppressedBundleIDs() const {
    return bundleIDs;
  }
  [[nodiscard]] const std::unordered_set<std::string>& suppressedClusterIDs() const {
    return clusterIDs;
  }

 private:
  void suppressDonor(const ComparisonKeys& keys);

  NameSuppressionStatus status;
  std::unordered_set<std::string> bundleIDs;
  std::unordered_set<std::string> clusterIDs;
};

}  // namespace quenlet
