#pragma once

#include <cstdint>

#include "model/DonationValue.h"
#include "quenlet/Result.h"

namespace quenlet {

// The interface that the author of a donor extension implements. Called one request at a time, on
// the thread that runs the extension; an exception becomes an error to the agent. An error's text
// goes into the agent's log: it must not contain personal values.
class ExtensionDonor {
 public:
  virtual ~ExtensionDonor() = default;
  // The new expiration date of a value that this extension donated. A date in the past withdraws
  // the donation; an error leaves it unchanged until it expires.
  [[nodiscard]] virtual Result<Date> renewExpirationDate(const DonationValue& value) = 0;
  // All current values, each with the extension's own bundle identifier. `reason` is 1 when
  // donations have just been enabled.
  [[nodiscard]] virtual Result<DonationValues> allValues(std::uint64_t reason) = 0;
};

}  // namespace quenlet
