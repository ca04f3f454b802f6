#include "mecard/CollectedSuppressionResult.h"

#include "model/DonationKeys.h"

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
    firstName = &donation;
  } else if (const auto* first = status.as<NameSuppressionStatus::OneDonation>()) {
    if (donation.contentKey() != first->name) {
      status = NameSuppressionStatus(NameSuppressionStatus::DifferentDonations{});
      dissentingName = &donation;
    }
  }
}

void CollectedSuppressionResult::suppressDonor(const DonationValue& donation) {
  if (donation.clusterKey()) {
    clusterIDs.emplace(donation.clusterKey(), &donation);
  } else {
    bundleIDs.emplace(donation.bundleKey(), &donation);
  }
}

CardDecision CollectedSuppressionResult::decide(const DonationValue& donation) const {
  if (!bundleIDs.empty() && bundleIDs.contains(donation.bundleKey())) {
    return CardDecision::appSilenced;
  }
  if (!clusterIDs.empty() && clusterIDs.contains(donation.clusterKey())) {
    return CardDecision::clusterSilenced;
  }
  if (donation.kind() != DonationKind::name) return CardDecision::shown;
  if (status.as<NameSuppressionStatus::Curated>()) return CardDecision::ownName;
  if (status.as<NameSuppressionStatus::DifferentDonations>()) return CardDecision::namesDisagree;
  return CardDecision::shown;
}

CardReason CollectedSuppressionResult::explain(const DonationValue& donation) const {
  const CardDecision decision = decide(donation);
  switch (decision) {
    case CardDecision::appSilenced:
      return {decision, bundleIDs.at(donation.bundleKey())};
    case CardDecision::clusterSilenced:
      return {decision, clusterIDs.at(donation.clusterKey())};
    case CardDecision::namesDisagree: {
      const bool agreesWithFirst = donation.contentKey() == firstName->contentKey();
      return {decision, agreesWithFirst ? dissentingName : firstName};
    }
    default:
      return {decision};
  }
}

}  // namespace quenlet
