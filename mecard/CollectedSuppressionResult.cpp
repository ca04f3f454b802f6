#include "mecard/CollectedSuppressionResult.h"

#include "model/SuppressionNameEquivalence.h"

namespace quenlet {
namespace {

NameSuppressionStatus statusForCuratedName(const std::optional<PersonNameComponents>& name) {
  if (!name) return {NameSuppressionStatus::None{}};
  return {NameSuppressionStatus::Curated{SuppressionNameEquivalence::keyOf(*name)}};
}

}  // namespace

CollectedSuppressionResult::CollectedSuppressionResult(
    const std::optional<PersonNameComponents>& curatedName)
    : status(statusForCuratedName(curatedName)) {}

void CollectedSuppressionResult::collect(const DonationValue& donation) {
  if (donation.kind() != DonationKind::name) return;
  if (const auto* curated = status.as<NameSuppressionStatus::Curated>()) {
    if (donation.contentKey() != curated->name) suppressDonor(donation);
  } else if (status.as<NameSuppressionStatus::None>()) {
    status = NameSuppressionStatus(NameSuppressionStatus::OneDonation{donation.contentKey()});
  } else if (const auto* first = status.as<NameSuppressionStatus::OneDonation>()) {
    if (donation.contentKey() != first->name) {
      status = NameSuppressionStatus(NameSuppressionStatus::DifferentDonations{});
    }
  }
}

void CollectedSuppressionResult::suppressDonor(const DonationValue& donation) {
  if (donation.clusterKey()) {
    clusterIDs.insert(donation.clusterKey());
  } else {
    bundleIDs.insert(donation.bundleKey());
  }
}

bool CollectedSuppressionResult::keeps(const DonationValue& donation) const {
  if (!bundleIDs.empty() && bundleIDs.contains(donation.bundleKey())) return false;
  if (!clusterIDs.empty() && clusterIDs.contains(donation.clusterKey())) return false;
  const bool namesMayStay =
      status.as<NameSuppressionStatus::OneDonation>() || status.as<NameSuppressionStatus::None>();
  return namesMayStay || donation.kind() != DonationKind::name;
}

}  // namespace quenlet
