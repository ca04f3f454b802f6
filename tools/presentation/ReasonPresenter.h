#pragma once

#include <ostream>
#include <vector>

#include "quenlet/Date.h"
#include "tools/owner/DonationStates.h"
#include "tools/owner/UnlistedValues.h"
#include "tools/presentation/Screen.h"

namespace quenlet {

// Tells people why values are, or are not, on the card. Stateless.
class ReasonPresenter final {
 public:
  ReasonPresenter() = delete;

  // What is not shown: under a heading for each state the sentences, each with its values, and what
  // the owner can do. Donations that are shown are left out.
  static void writeGrouped(std::ostream& out, const Screen& screen,
                           const StatedDonations& donations,
                           const std::vector<UnlistedValue>& unlisted);
  // Each value by itself, shown or not.
  static void writeEach(std::ostream& out, const Screen& screen, Date now,
                        const StatedDonations& donations,
                        const std::vector<UnlistedValue>& unlisted);
};

}  // namespace quenlet
