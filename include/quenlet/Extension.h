#pragma once

#include <cstdint>
#include <vector>

#include "quenlet/Date.h"
#include "quenlet/Donation.h"
#include "quenlet/Export.h"
#include "quenlet/Result.h"

namespace quenlet {

// What the author of a donor extension implements. Called one request at a time, on the thread that
// runs the extension. An exception becomes an error to the agent, without its text. The text of an
// error goes into the agent's log: it must not contain personal values.
class QUENLET_API Extension {
 public:
  // The agent asks because donations have just been enabled.
  static constexpr std::uint64_t donationsEnabled = 1;

  virtual ~Extension() = default;
  // The new expiration date of a donation of this extension's. A date in the past takes the
  // donation back; an error leaves it as it is until it expires.
  [[nodiscard]] virtual Result<Date> renew(const Donation& donation) = 0;
  // All current donations, each with the extension's own bundle identifier. `reason` is
  // donationsEnabled, or a reason that later agents may have.
  [[nodiscard]] virtual Result<std::vector<Donation>> allDonations(std::uint64_t reason) = 0;
};

// All that the main() of a donor extension has to do: takes the agent's socket from the standard
// input, which reads as empty from then on, and answers requests on the calling thread until the
// agent closes the socket. Returns the exit status: 0, or 2 with a line on standard error when it
// was not the agent that started the program.
[[nodiscard]] QUENLET_API int runExtension(Extension& extension);

}  // namespace quenlet
