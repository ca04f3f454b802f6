#pragma once

#include "model/DonationValue.h"

namespace quenlet {

// Checks what the agent's own sources donate, which comes over no socket. Stateless; any thread.
class OwnDonations final {
 public:
  OwnDonations() = delete;

  // The values that a file can hold and that keep to the bounds of a record, in their order. Each
  // of the others is told on standard error by its identifier: in the table it would keep every
  // later save off the disk, or make every comparison slow.
  [[nodiscard]] static DonationValues storable(DonationValues values);
};

}  // namespace quenlet
