#pragma once

#include "analytics/AnalyticsReporting.h"

namespace quenlet {

// Writes reports as lines for people to the system log, under subsystem "ovaro.quenlet" and
// category "analytics". Lines hold numbers, never values. Stateless, thread-safe.
class LogAnalyticsReporter final : public AnalyticsReporting {
 public:
  void reportNumberOfMeCards(std::uint64_t count) override;
  void reportHasNameComponents(bool hasNameComponents, bool hasEmailAddress, bool hasPhoneNumber,
                               bool hasPostalAddress) override;
  void reportAugmentationStatus(const AugmentationStatus& status) override;
  [[nodiscard]] std::string description() const override;
};

}  // namespace quenlet
