#include "donors/mail/MailDonor.h"

#include <algorithm>
#include <utility>

#include "client/Pseudonyms.h"
#include "donors/mail/Mailbox.h"

namespace quenlet {
namespace {

Date inDays(Date now, int days) { return now.addingSeconds(days * 86400.0); }

}  // namespace

Result<Date> MailDonor::renew(const Donation& donation) {
  if (!known) {
    if (ErrorPtr error = readSource()) return Result<Date>::failure(std::move(error));
  }
  const bool isStillThere = std::any_of(known->begin(), known->end(), [&](const Donation& present) {
    return present.donationIdentifier == donation.donationIdentifier &&
           present.content == donation.content;
  });
  return Result<Date>::success(inDays(Date::now(), isStillThere ? 30 : -1));
}

Result<std::vector<Donation>> MailDonor::allDonations(std::uint64_t /*reason*/) {
  using Donated = Result<std::vector<Donation>>;
  if (ErrorPtr error = readSource()) return Donated::failure(std::move(error));
  return Donated::success(*known);
}

ErrorPtr MailDonor::readSource() {
  known.reset();
  const MailIdentities identities = source();
  if (!identities.ok()) return identities.error();
  std::vector<Donation> donations;
  const Date now = Date::now();
  for (const MailIdentity& identity : identities.value()) addIdentity(identity, now, donations);
  known = std::move(donations);
  return nullptr;
}

void MailDonor::addIdentity(const MailIdentity& identity, Date now,
                            std::vector<Donation>& donations) const {
  const std::string cluster = bundle + ":" + Pseudonyms::withoutSecret().of(identity.key);
  const auto add = [&](auto content, const std::string& kind) {
    donations.push_back({.content = std::move(content),
                         .bundleIdentifier = bundle,
                         .donationIdentifier = cluster + ":" + kind,
                         .clusterIdentifier = cluster,
                         .donationDate = now,
                         .expirationDate = inDays(now, 30)});
  };
  const std::size_t countBefore = donations.size();
  for (std::size_t place = 0; place < identity.mailboxes.size(); ++place) {
    if (auto address = personalAddress(identity.mailboxes[place])) {
      add(Email{.address = *std::move(address)}, "email:" + std::to_string(place + 1));
    }
  }
  // An identity without an address of the owner's may be a list's or a machine's.
  if (donations.size() == countBefore) return;
  if (auto name = fullName(identity.name)) add(*std::move(name), "name");
}

int runMailDonor(const char* bundleIdentifier,
                 MailIdentities (*identities)(const UserPlaces& places)) {
  MailDonor donor(bundleIdentifier, [identities] {
    const Result<UserPlaces> places = UserPlaces::ofProcess();
    return places.ok() ? identities(places.value()) : MailIdentities::failure(places.error());
  });
  return runExtension(donor);
}

}  // namespace quenlet
