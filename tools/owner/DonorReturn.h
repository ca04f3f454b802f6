#pragma once

#include <cstddef>
#include <filesystem>
#include <string>
#include <vector>

#include "model/DonationValue.h"

namespace quenlet {

// How the values of donors come back after all donations were deleted. A value type.
struct DonorReturn final {
  // With the number of their donations.
  std::size_t accounts = 0;    // read again by the agent
  std::size_t simCards = 0;    // donated when an agent starts
  std::size_t extensions = 0;  // asked again by the agent, as long as they are installed
  std::size_t others = 0;      // only their donors can donate them again
  std::vector<std::string> otherDonors = {};

  // Looks up which extensions are installed; faults of theirs are reported on standard error.
  [[nodiscard]] static DonorReturn of(const DonationValues& donations,
                                      const std::filesystem::path& home);
  [[nodiscard]] std::size_t all() const { return accounts + simCards + extensions + others; }
};

}  // namespace quenlet
