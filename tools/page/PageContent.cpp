#include "tools/page/PageContent.h"

#include <algorithm>
#include <map>
#include <utility>

#include "mecard/ContactBuilder.h"

namespace quenlet {
namespace {

PageDonations parsed(const StatedDonations& stated) {
  PageDonations donations;
  donations.reserve(stated.size());
  for (const StatedDonation& each : stated) {
    DecodedDonation decoded = each.donation->decoded();
    donations.push_back({each, Value(std::move(decoded.content)), std::move(decoded.origin)});
  }
  return donations;
}

std::vector<DonorGroup> groupedByDonor(const PageDonations& donations) {
  std::map<std::string, DonorGroup> byBundle;
  for (const auto& [stated, value, origin] : donations) {
    const DonorGroup first{.bundleIdentifier = origin.bundleIdentifier,
                           .lastDonation = origin.donationDate,
                           .nextExpiration = origin.expirationDate};
    DonorGroup& donor = byBundle.try_emplace(origin.bundleIdentifier, first).first->second;
    if (origin.clusterIdentifier) donor.clusters.insert(*origin.clusterIdentifier);
    ++(stated.isShown() ? donor.shown : donor.leftOut);
    donor.lastDonation = std::max(donor.lastDonation, origin.donationDate);
    donor.nextExpiration = std::min(donor.nextExpiration, origin.expirationDate);
  }
  std::vector<DonorGroup> groups;
  groups.reserve(byBundle.size());
  for (auto& [bundle, donor] : byBundle) groups.push_back(std::move(donor));
  return groups;
}

Contact merged(const StatedDonations& stated) {
  ContactBuilder builder;
  for (const StatedDonation& each : stated) {
    if (each.isShown()) builder.addWithDonatedValue(each.donation);
  }
  return builder.build();
}

}  // namespace

PageContent::PageContent(Date now, OwnersValues values)
    : madeOn(now),
      donationsEnabled(values.donationsEnabled),
      own(std::move(values.own)),
      donations(parsed(values.listed)),
      donorGroups(groupedByDonor(donations)),
      donated(merged(values.listed)),
      missing(values.missing()),
      decisions(std::move(values.decisions)) {}

}  // namespace quenlet
