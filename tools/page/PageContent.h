#pragma once

#include <cstddef>
#include <set>
#include <string>
#include <vector>

#include "platform/contacts/Contact.h"
#include "tools/owner/OwnersValues.h"

namespace quenlet {

// A donation of the page, parsed once for all sections.
struct PageDonation final {
  StatedDonation stated;
  Value value;
  DonationOrigin origin;
};
using PageDonations = std::vector<PageDonation>;

// Some of the page's donations, in the order of the list.
using SomeDonations = std::vector<const PageDonation*>;

// What is known of a donor from its donations.
struct DonorGroup final {
  std::string bundleIdentifier;
  std::set<std::string> clusters = {};
  std::size_t shown = 0;
  std::size_t leftOut = 0;
  Date lastDonation;
  Date nextExpiration;
};

// All that the page shows. Immutable.
class PageContent final {
 public:
  PageContent(Date now, OwnersValues values);

  const Date madeOn;
  const bool donationsEnabled;
  const OwnCard own;
  const PageDonations donations;
  // In alphabetical order of the donors.
  const std::vector<DonorGroup> donorGroups;
  // The merged card of what is shown.
  const Contact donated;
  // Values that were given and are not on the agent's list.
  const std::vector<UnlistedValue> missing;
  const std::vector<FeedbackDecision> decisions;
};

}  // namespace quenlet
