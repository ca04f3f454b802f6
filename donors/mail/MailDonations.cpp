#include "donors/mail/MailDonations.h"

#include <utility>

#include "donors/source/DonationCluster.h"
#include "foreign/Mailbox.h"

namespace quenlet {
namespace {

void addIdentity(const std::string& bundleIdentifier, const MailIdentity& identity,
                 std::vector<Donation>& donations) {
  DonationCluster cluster(bundleIdentifier, identity.key);
  for (std::size_t place = 0; place < identity.mailboxes.size(); ++place) {
    if (auto address = personalAddress(identity.mailboxes[place])) {
      cluster.add(Email{.address = *std::move(address)}, "email:" + std::to_string(place + 1));
    }
  }
  // An identity without an address of the owner's may be a list's or a machine's.
  if (cluster.isEmpty()) return;
  if (auto name = fullName(identity.name)) cluster.add(*std::move(name), "name");
  cluster.moveTo(donations);
}

}  // namespace

SourceDonor::Donations mailDonations(const std::string& bundleIdentifier,
                                     const MailIdentities& identities) {
  using Donations = SourceDonor::Donations;
  if (!identities.ok()) return Donations::failure(identities.error());
  std::vector<Donation> donations;
  for (const MailIdentity& identity : identities.value()) {
    addIdentity(bundleIdentifier, identity, donations);
  }
  return Donations::success(std::move(donations));
}

int runMailDonor(const char* bundleIdentifier,
                 MailIdentities (*identities)(const UserPlaces& places)) {
  SourceDonor donor([=] {
    const Result<UserPlaces> places = UserPlaces::ofProcess();
    return mailDonations(bundleIdentifier, places.ok() ? identities(places.value())
                                                       : MailIdentities::failure(places.error()));
  });
  return runExtension(donor);
}

}  // namespace quenlet
