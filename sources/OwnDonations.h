#pragma once

#include "model/DonationValue.h"

namespace quenlet {

// Checks the donations of the agent's own sources, which bypass the socket. Stateless; any thread.
class OwnDonations final {
 public:
  OwnDonations() = delete;

  // The values that a file can hold and that are within the bounds of a record, in their order. The
  // others are reported on standard error by their identifiers: in the table such a value would
  // make every later save fail, or every comparison slow.
  [[nodiscard]] static DonationValues storable(DonationValues values);
};

}  // namespace quenlet
