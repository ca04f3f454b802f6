#pragma once

#include "platform/contacts/ValueOrigin.h"

namespace quenlet {

// The origin of a donation is the very record that the entries of the donated card carry, so that
// a card shares it with the donations instead of copying it.
using DonationOrigin = ValueOrigin;

}  // namespace quenlet
