#include "analytics/AggregateAnalyticsReporter.h"

#include "analytics/DescriptionBuilder.h"

namespace quenlet {

void AggregateAnalyticsReporter::reportNumberOfMeCards(std::uint64_t count) {
  for (const auto& reporter : allReporters) reporter->reportNumberOfMeCards(count);
}

void AggregateAnalyticsReporter::reportHasNameComponents(bool hasNameComponents,
                                                         bool hasEmailAddress, bool hasPhoneNumber,
                                                         bool hasPostalAddress) {
  for (const auto& reporter : allReporters) {
    reporter->reportHasNameComponents(hasNameComponents, hasEmailAddress, hasPhoneNumber,
                                      hasPostalAddress);
  }
}

void AggregateAnalyticsReporter::reportAugmentationStatus(const AugmentationStatus& status) {
  for (const auto& reporter : allReporters) reporter->reportAugmentationStatus(status);
}

std::string AggregateAnalyticsReporter::description() const {
  std::string all = "(";
  for (const auto& reporter : allReporters) {
    all.append(all.size() > 1 ? ", " : "").append(reporter->description());
  }
  return DescriptionBuilder("AggregateAnalyticsReporter").append("reporters", all + ")").build();
}

}  // namespace quenlet
