#pragma once

#include <cstddef>

#include "model/DonationValue.h"

namespace quenlet {

// `count` donations as they come from many donors: of ten, one name, four e-mail addresses, three
// phone numbers and two postal addresses, a few of them duplicates in another letter case.
[[nodiscard]] DonationValues sampleDonations(std::size_t count);

}  // namespace quenlet
