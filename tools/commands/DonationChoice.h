#pragma once

#include <optional>
#include <string>
#include <vector>

#include "tools/commands/Session.h"
#include "tools/owner/AgentDonations.h"

namespace quenlet {

// The donations that the words on the command line name, as in Selection.h. Stateless.
class DonationChoice final {
 public:
  DonationChoice() = delete;

  // Those of `list` that each of `texts` names, in the list's order, each once. Nothing when one of
  // them names none, or is a number of a list that has changed since it was shown; that has then
  // been said.
  [[nodiscard]] static std::optional<DonationValues> choose(const Session& session,
                                                            const DonationValues& list,
                                                            const std::vector<std::string>& texts);
};

}  // namespace quenlet
