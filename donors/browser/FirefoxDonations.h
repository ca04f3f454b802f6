#pragma once

#include "donors/browser/OwnersName.h"
#include "donors/source/SourceDonor.h"
#include "foreign/UserPlaces.h"

namespace quenlet {

// What Firefox fills into forms for its owner: of the saved addresses, those with the owner's name.
// The others are other people's. An address is a cluster. Nothing when the owner's name is unknown.
[[nodiscard]] SourceDonor::Donations firefoxDonations(const UserPlaces& places,
                                                      const OwnersName& owner);

}  // namespace quenlet
