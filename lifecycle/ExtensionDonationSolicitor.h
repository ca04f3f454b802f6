#pragma once

#include <memory>
#include <utility>

#include "platform/extensions/DonorExtension.h"
#include "sources/DonationSolicitor.h"

namespace quenlet {

// Asks one donor extension to donate all of its values again. Thread-safe.
class ExtensionDonationSolicitor final : public DonationSolicitor {
 public:
  explicit ExtensionDonationSolicitor(std::shared_ptr<DonorExtension> extension)
      : donor(std::move(extension)) {}

  void runWithReason(std::uint64_t reason) override { donor->redonateAllValuesWithReason(reason); }

 private:
  const std::shared_ptr<DonorExtension> donor;
};

}  // namespace quenlet
