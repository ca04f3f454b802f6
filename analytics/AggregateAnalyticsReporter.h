#pragma once

#include <vector>

#include "analytics/AnalyticsReporting.h"

namespace quenlet {

// Passes every report on to several reporters, in their order. Immutable, thread-safe.
class AggregateAnalyticsReporter final : public AnalyticsReporting {
 public:
  using Reporters = std::vector<std::shared_ptr<AnalyticsReporting>>;

  // Without reporters it drops what it is told.
  explicit AggregateAnalyticsReporter(Reporters all = {}) : allReporters(std::move(all)) {}

  [[nodiscard]] const Reporters& reporters() const { return allReporters; }

  void reportNumberOfMeCards(std::uint64_t count) override;
  void reportHasNameComponents(bool hasNameComponents, bool hasEmailAddress, bool hasPhoneNumber,
                               bool hasPostalAddress) override;
  void reportAugmentationStatus(const AugmentationStatus& status) override;
  [[nodiscard]] std::string description() const override;

 private:
  const Reporters allReporters;
};

}  // namespace quenlet
