#pragma once

#include <memory>
#include <utility>

#include "core/Corvel.h"
#include "sources/DonationSolicitor.h"

namespace quenlet {

// Has all accounts donated again. Thread-safe.
class AccountsDonationSolicitor final : public DonationSolicitor {
 public:
  explicit AccountsDonationSolicitor(std::shared_ptr<Corvel> accountsAgent)
      : donationAgent(std::move(accountsAgent)) {}

  [[nodiscard]] const std::shared_ptr<Corvel>& agent() const { return donationAgent; }
  void runWithReason(std::uint64_t) override { donationAgent->reloadAllAccounts(); }

 private:
  const std::shared_ptr<Corvel> donationAgent;
};

}  // namespace quenlet
