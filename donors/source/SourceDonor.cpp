#include "donors/source/SourceDonor.h"

#include <algorithm>

#include "donors/source/DonationCluster.h"

namespace quenlet {

Result<Date> SourceDonor::renew(const Donation& donation) {
  if (!known) {
    if (ErrorPtr error = readSource()) return Result<Date>::failure(std::move(error));
  }
  const bool isStillThere = std::any_of(known->begin(), known->end(), [&](const Donation& present) {
    return present.donationIdentifier == donation.donationIdentifier &&
           present.content == donation.content;
  });
  const int days = isStillThere ? DonationCluster::days : -1;
  return Result<Date>::success(Date::now().addingSeconds(days * 86400.0));
}

SourceDonor::Donations SourceDonor::allDonations(std::uint64_t /*reason*/) {
  if (ErrorPtr error = readSource()) return Donations::failure(std::move(error));
  return Donations::success(*known);
}

ErrorPtr SourceDonor::readSource() {
  known.reset();
  Donations donations = source();
  if (!donations.ok()) return donations.error();
  known = std::move(donations).takeValue();
  return nullptr;
}

}  // namespace quenlet
