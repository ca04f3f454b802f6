#pragma once

#include "platform/contacts/ValueOrigin.h"

namespace quenlet {

// The bundles under which the agent itself donates.
inline constexpr char AccountsBundleIdentifier[] = "ovaro.quenlet.accounts";
inline constexpr char SIMCardBundleIdentifier[] = "ovaro.quenlet.sim-card";

// The origin of a donation has the type of the origins that entries of the donated card carry.
using DonationOrigin = ValueOrigin;

}  // namespace quenlet
