#pragma once

#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "donors/mail/MailIdentities.h"
#include "quenlet/Extension.h"

namespace quenlet {

// Donates the names and addresses of a mail program's identities for 30 days, and renews for 30
// more each value that the program still has. Takes back those that it has no more, but nothing
// while its files cannot be read. Renewals go by the files as read at the first one or at a
// re-donation since: a run of an extension is short. One thread.
//
// An identity is a cluster, so that the owner can reject all of it. Identifiers hold pseudonyms of
// the identities' keys, and count addresses by their place, left-out ones included.
class MailDonor final : public Extension {
 public:
  using Source = std::function<MailIdentities()>;

  MailDonor(std::string ownBundle, Source identitySource)
      : bundle(std::move(ownBundle)), source(std::move(identitySource)) {}

  [[nodiscard]] Result<Date> renew(const Donation& donation) override;
  [[nodiscard]] Result<std::vector<Donation>> allDonations(std::uint64_t reason) override;

 private:
  [[nodiscard]] ErrorPtr readSource();
  void addIdentity(const MailIdentity& identity, Date now, std::vector<Donation>& donations) const;

  const std::string bundle;
  const Source source;
  std::optional<std::vector<Donation>> known;
};

// The main() of the program that donates what `identities` finds for the user of the process.
[[nodiscard]] int runMailDonor(const char* bundleIdentifier,
                               MailIdentities (*identities)(const UserPlaces& places));

}  // namespace quenlet
