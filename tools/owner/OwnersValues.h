#pragma once

#include <vector>

#include "protocol/CorvelProtocol.h"
#include "quenlet/Date.h"
#include "quenlet/Result.h"
#include "tools/owner/DonationStates.h"
#include "tools/owner/OwnCard.h"
#include "tools/owner/UnlistedValues.h"

namespace quenlet {

// All that is known of the values that were given for the owner's card, at one moment.
struct OwnersValues final {
  bool donationsEnabled = true;
  OwnCard own = {};
  // Empty while donations are off: then the agent tells nothing.
  StatedDonations listed = {};
  std::vector<FeedbackDecision> decisions = {};
  std::vector<UnlistedValue> unlisted = {};
  // The damaged files that kept decisions and a part of `unlisted` from being read.
  std::vector<ErrorPtr> problems = {};

  // Asks the agent once. An error when it gives no list, or the user has no home directory.
  [[nodiscard]] static Result<OwnersValues> read(CorvelProtocol& agent, Date now);

  // Those of `unlisted` that nobody took back: the owner may look for them.
  [[nodiscard]] std::vector<UnlistedValue> missing() const;
};

// The agent's list with the states of its donations; asks the agent once.
[[nodiscard]] Result<StatedDonations> listedDonations(CorvelProtocol& agent);

}  // namespace quenlet
