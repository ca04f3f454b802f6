#pragma once

#include <cstddef>
#include <memory>
#include <string>

#include "protocol/CorvelProtocol.h"
#include "quenlet/Result.h"

namespace quenlet {

// What became of all the values of one donor, when they took the place of its former ones.
struct CollectedDonor final {
  std::size_t donated = 0;
  std::size_t leftOut = 0;  // the agent did not take them: they are rejected or confirmed
  std::size_t removed = 0;  // the donor has them no more

  // Donates `values`, then removes what else the agent has of that bundle and had when it gave the
  // list `before`: what came since may be newer than the donor's answer. The agent has no operation
  // that does both: after an error in between, the card shows both until the next time. Each step
  // waits for the agent.
  [[nodiscard]] static Result<CollectedDonor> replace(
      CorvelProtocol& agent, const std::string& bundleIdentifier, const DonationValues& values,
      const std::shared_ptr<const DonationValues>& before);
};

}  // namespace quenlet
