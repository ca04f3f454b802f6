#include "tools/owner/AgentDonations.h"

#include <algorithm>
#include <iterator>
#include <set>

#include "tools/owner/WaitingAgent.h"

namespace quenlet {

Result<DonationListPtr> donationsOf(CorvelProtocol& agent) {
  return WaitingAgent(agent).donations();
}

DonationValues missingFrom(const DonationValues& after, const DonationValues& before) {
  std::set<std::string> present;
  for (const DonationValuePtr& donation : after) {
    present.insert(donation->decoded().origin.donationIdentifier);
  }
  DonationValues missing;
  std::copy_if(before.begin(), before.end(), std::back_inserter(missing),
               [&](const DonationValuePtr& donation) {
                 return !present.contains(donation->decoded().origin.donationIdentifier);
               });
  return missing;
}

bool expiresBy(const DonationValue& donation, Date until) {
  return donation.expirationDate() <= until;
}

std::size_t countExpiring(const DonationValues& donations, Date until) {
  return static_cast<std::size_t>(std::count_if(
      donations.begin(), donations.end(),
      [until](const DonationValuePtr& donation) { return expiresBy(*donation, until); }));
}

std::vector<std::string> donorsOf(const DonationValues& donations) {
  std::set<std::string> donors;
  for (const DonationValuePtr& donation : donations) {
    donors.insert(donation->decoded().origin.bundleIdentifier);
  }
  return {donors.begin(), donors.end()};
}

}  // namespace quenlet
