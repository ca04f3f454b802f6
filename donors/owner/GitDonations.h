#pragma once

#include <optional>

#include "donors/source/SourceDonor.h"
#include "foreign/OutsideCommand.h"

namespace quenlet {

// The address under which the owner commits, asked of git itself, whose files may include others. A
// name that developers write there is often a login's, and is left alone.
[[nodiscard]] SourceDonor::Donations gitDonations();
// By git's answer; nothing when git did not answer.
[[nodiscard]] SourceDonor::Donations gitDonationsFrom(const std::optional<CommandEnd>& answer);

}  // namespace quenlet
