#include "sources/sim/SIMCardDonationSolicitor.h"

#include "platform/PlatformServices.h"
#include "platform/logging/StandardOutput.h"
#include "sources/sim/SIMCardMonitor.h"
#include "sources/sim/SIMCardText.h"

namespace quenlet {

void SIMCardDonationSolicitor::runWithReason(std::uint64_t /*reason*/) {
  if (!SIMCardMonitor::shouldMonitor()) return;
  PlatformServices::current().makePhoneNumberMonitor()->infoWithCompletion(
      [](const std::optional<SIMCardItems>& items, const ErrorPtr& error) {
        printLine("SIM info: " + SIMCardText::of(items));
        printLine("Error: " + SIMCardText::of(error));
      });
}

}  // namespace quenlet
