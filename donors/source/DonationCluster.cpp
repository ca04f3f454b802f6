#include "donors/source/DonationCluster.h"

#include <iterator>

#include "client/Pseudonyms.h"

namespace quenlet {

DonationCluster::DonationCluster(std::string bundleIdentifier, std::string_view key)
    : bundle(std::move(bundleIdentifier)),
      cluster(bundle + ":" + Pseudonyms::withoutSecret().of(key)) {}

Donation DonationCluster::made(const std::string& kind) const {
  return {.bundleIdentifier = bundle,
          .donationIdentifier = cluster + ":" + kind,
          .clusterIdentifier = cluster,
          .donationDate = now,
          .expirationDate = now.addingSeconds(days * 86400.0)};
}

void DonationCluster::moveTo(std::vector<Donation>& all) {
  all.insert(all.end(), std::make_move_iterator(donations.begin()),
             std::make_move_iterator(donations.end()));
  donations.clear();
}

}  // namespace quenlet
