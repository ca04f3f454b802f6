#pragma once

#include "analytics/AnalyticsReporting.h"

namespace quenlet {

// Counts reports in the platform's counter store. Stateless, thread-safe.
class CounterAnalyticsReporter final : public AnalyticsReporting {
 public:
  void reportNumberOfMeCards(std::uint64_t count) override;
  void reportHasNameComponents(bool hasNameComponents, bool hasEmailAddress, bool hasPhoneNumber,
                               bool hasPostalAddress) override;
  void reportAugmentationStatus(const AugmentationStatus& status) override;
  // `reportNumberOfMatchedEmailAddresses:numberOfUnmatchedEmailAddresses:…`.
  void reportNumberOfMatchedEmailAddresses(std::uint64_t matchedEmailAddresses,
                                           std::uint64_t numberOfUnmatchedEmailAddresses,
                                           std::uint64_t numberOfMatchedPhoneNumbers,
                                           std::uint64_t numberOfUnmatchedPhoneNumbers,
                                           std::uint64_t numberOfMatchedPostalAddresses,
                                           std::uint64_t numberOfUnmatchedPostalAddresses);
  [[nodiscard]] std::string description() const override;
};

}  // namespace quenlet
