#include "mecard/CollectedSuppressionResult.h"

namespace quenlet {
namespace {

NameSuppressionStatus statusForCuratedName(const std::optional<PersonNameComponents>& name) {
  if (!name) return {NameSuppressionStatus::None{}};
  return {NameSuppressionStatus::Curated{NameKey::keyForName(*name)}};
}

}  // namespace

CollectedSuppressionResult::CollectedSuppressionResult(
    const std::optional<PersonNameComponents>& curatedName)
    : status(statusForCuratedName(curatedName)) {}

void CollectedSuppressionResult::collect(const DonationValue& donation) {
  if (!donation.isName()) return;
  if (const auto* curated = status.as<NameSuppressionStatus::Curated>()) {
    if (!donation.hasNameKey(curated->name)) suppressDonor(donation);
  } else if (status.as<NameSuppressionStatus::None>()) {
    status = NameSuppressionStatus(NameSuppressionStatus::OneDonation{donation.nameKey()});
  } else if (const auto* first = status.as<NameSuppressionStatus::OneDonation>()) {
    if (!donation.hasNameKey(first->name)) {
      status = NameSuppressionStatus(NameSuppressionStatus::DifferentDonations{});
    }
  }
}

void CollectedSuppressionResult::suppressDonor(const DonationValue& donation) {
  if (const ComparisonKey cluster = donation.clusterKey(); cluster.text.empty()) {
    bundleIDs.insert(donation.bundleKey());
  } else {
    clusterIDs.insert(cluster);
  }
}

bool CollectedSuppressionResult::keeps(const DonationValue& donation) const {
  if (!bundleIDs.empty() && bundleIDs.contains(donation.bundleKey())) return false;
  if (!clusterIDs.empty()) {
    const ComparisonKey cluster = donation.clusterKey();
    if (!cluster.text.empty() && clusterIDs.contains(cluster)) return false;
  }
  const bool namesMayStay =
      status.as<NameSuppressionStatus::OneDonation>() || status.as<NameSuppressionStatus::None>();
  return namesMayStay || !donation.isName();
}

}  // namespace quenlet
