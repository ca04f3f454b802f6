#pragma once

#include <memory>
#include <utility>

#include "protocol/CorvelProtocol.h"
#include "sources/DonationSolicitor.h"

namespace quenlet {

// Prints what the SIM cards hold, on a device that has them; donates nothing. Thread-safe.
class SIMCardDonationSolicitor final : public DonationSolicitor {
 public:
  explicit SIMCardDonationSolicitor(std::shared_ptr<CorvelProtocol> simAgent)
      : donationAgent(std::move(simAgent)) {}

  [[nodiscard]] const std::shared_ptr<CorvelProtocol>& agent() const { return donationAgent; }
  void runWithReason(std::uint64_t reason) override;

 private:
  const std::shared_ptr<CorvelProtocol> donationAgent;
};

}  // namespace quenlet
