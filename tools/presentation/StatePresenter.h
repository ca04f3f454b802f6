#pragma once

#include <ostream>
#include <vector>

#include "tools/owner/DonationStates.h"
#include "tools/owner/UnlistedValues.h"
#include "tools/presentation/Screen.h"

namespace quenlet {

// Shows values with what has become of them. Stateless.
class StatePresenter final {
 public:
  StatePresenter() = delete;

  // One line per donation, under headings; nothing for none.
  static void writeTable(std::ostream& out, const Screen& screen, const StatedDonations& donations);
  // An array with one object for each: what DonationPresenter tells of a donation, "state" and,
  // unless it is shown, "because". A donation of the list also has its "number", and "other", the
  // identifier of the donation that the sentence speaks of. Another value lacks what is not known.
  static void writeJSON(std::ostream& out, const StatedDonations& donations,
                        const std::vector<UnlistedValue>& unlisted = {});
};

}  // namespace quenlet
