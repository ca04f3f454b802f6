#pragma once

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

// All that the page shows. Immutable.
class PageContent final {
 public:
  PageContent(Date now, OwnersValues values);

  const Date madeOn;
  const bool donationsEnabled;
  const OwnCard own;
  const PageDonations donations;
  // The merged card of what is shown.
  const Contact donated;
  // What was given and is not on the agent's list.
  const std::vector<UnlistedValue> missing;
  const std::vector<FeedbackDecision> decisions;
};

}  // namespace quenlet
