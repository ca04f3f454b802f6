#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

#include "protocol/CorvelProtocol.h"
#include "quenlet/Result.h"

// The agent's list, and what a change made of it. No operation of the agent tells how many
// donations it has removed, so it is asked for its list before and after. Stateless.
namespace quenlet {

using DonationListPtr = std::shared_ptr<const DonationValues>;

// Never null.
[[nodiscard]] Result<DonationListPtr> donationsOf(CorvelProtocol& agent);

// Those of `before` whose identifiers are not in `after` any more, in their order.
[[nodiscard]] DonationValues missingFrom(const DonationValues& after, const DonationValues& before);

// Whether it expires at that moment or has done so before.
[[nodiscard]] bool expiresBy(const DonationValue& donation, Date until);
// How many of them do.
[[nodiscard]] std::size_t countExpiring(const DonationValues& donations, Date until);

// The bundle identifiers of the donors, in ascending order, each once.
[[nodiscard]] std::vector<std::string> donorsOf(const DonationValues& donations);

}  // namespace quenlet
