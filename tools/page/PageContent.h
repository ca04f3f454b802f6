#pragma once

#include <vector>

#include "platform/contacts/Contact.h"
#include "platform/feedback/FeedbackEntries.h"
#include "tools/owner/DonationStates.h"
#include "tools/owner/OwnCard.h"

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
  PageContent(Date now, OwnCard ownCard, const StatedDonations& stated,
              std::vector<FeedbackDecision> ownersDecisions);

  const Date madeOn;
  const OwnCard own;
  const PageDonations donations;
  // The merged card of what is shown.
  const Contact donated;
  const std::vector<FeedbackDecision> decisions;
};

}  // namespace quenlet
