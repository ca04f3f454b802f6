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
  const ComparisonKeys& keys = donation.keys();
  if (const auto* curated = status.as<NameSuppressionStatus::Curated>()) {
    if (keys.name != curated->name) suppressDonor(keys);
  } else if (status.as<NameSuppressionStatus::None>()) {
    status = NameSuppressionStatus(NameSuppressionStatus::OneDonation{keys.name});
  } else if (const auto* first = status.as<NameSuppressionStatus::OneDonation>()) {
    if (keys.name != first->name) {
      status = NameSuppressionStatus(NameSuppressionStatus::DifferentDonations{});
    }
  }
}

void CollectedSuppressionResult::suppressDonor(const ComparisonKeys& keys) {
  if (keys.clusterIdentifier.empty()) {
    bundleIDs.insert(keys.bundleIdentifier);
  } else {
    clusterIDs.insert(keys.clusterIdentifier);
  }
}

bool CollectedSuppressionResult::keeps(const DonationValue& donation) const {
  const ComparisonKeys& keys = donation.keys();
  if (!bundleIDs.empty() && bundleIDs.contains(keys.bundleIdentifier)) return false;
  if (!clusterIDs.empty() && !keys.clusterIdentifier.empty() &&
      clusterIDs.contains(keys.clusterIdentifier)) {
    return false;
  }
  const bool namesMayStay =
      status.as<NameSuppressionStatus::OneDonation>() || status.as<NameSuppressionStatus::None>();
  return namesMayStay || !donation.isName();
}

}  // namespace quenlet
