#pragma once

#include <cstdint>

#include "model/DonationValue.h"
#include "platform/foundation/Either.h"

namespace quenlet {

// What the author of a donor extension implements. It is asked one thing at a time, on the thread
// that runs the extension; an exception becomes an error to the agent. An error's sentence comes to
// the agent's log: it must not hold personal values.
class ExtensionDonor {
 public:
  virtual ~ExtensionDonor() = default;
  // Until when a value that this extension donated holds from now on. A date that has passed takes
  // the donation back; an error leaves it as it is, until it expires.
  [[nodiscard]] virtual Result<Date> renewExpirationDate(const DonationValue& value) = 0;
  // All that there is to donate now, each value with the extension's own bundle identifier.
  // `reason` is 1 when donations have just been allowed.
  [[nodiscard]] virtual Result<DonationValues> allValues(std::uint64_t reason) = 0;
};

}  // namespace quenlet
