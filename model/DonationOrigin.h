#pragma once

#include "platform/contacts/ValueOrigin.h"

namespace quenlet {

// The bundles of what the agent donates itself.
inline constexpr char AccountsBundleIdentifier[] = "ovaro.quenlet.accounts";
inline constexpr char SIMCardBundleIdentifier[] = "ovaro.quenlet.sim-card";

// The origin of a donation is the very record that the entries of the donated card carry, so that
// a card shares it with the donations instead of copying it.
using DonationOrigin = ValueOrigin;

}  // namespace quenlet
