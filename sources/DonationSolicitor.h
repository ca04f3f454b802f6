#pragma once

#include <cstdint>

namespace quenlet {

// One source that the agent asks to donate again.
class DonationSolicitor {
 public:
  // Donations are on again after they were off.
  static constexpr std::uint64_t donationsEnabledReason = 1;

  virtual ~DonationSolicitor() = default;
  // Asks, and reports nothing. Any thread; does not wait for the source.
  virtual void runWithReason(std::uint64_t reason) = 0;
};

}  // namespace quenlet
