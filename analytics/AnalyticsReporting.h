#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "analytics/AugmentationStatus.h"

namespace quenlet {

// Where the daily report goes. Thread-safe; reporting never fails.
class AnalyticsReporting {
 public:
  virtual ~AnalyticsReporting() = default;

  virtual void reportNumberOfMeCards(std::uint64_t count) = 0;
  // `reportHasNameComponents:hasEmailAddress:hasPhoneNumber:hasPostalAddress:`.
  virtual void reportHasNameComponents(bool hasNameComponents, bool hasEmailAddress,
                                       bool hasPhoneNumber, bool hasPostalAddress) = 0;
  virtual void reportAugmentationStatus(const AugmentationStatus& status) = 0;
  [[nodiscard]] virtual std::string description() const = 0;

  // A new reporter to the system log, then to the counters.
  [[nodiscard]] static std::shared_ptr<AnalyticsReporting> makeStandardReporter();
  // The reporter that the process shares, made at the first call. It keeps the system log of the
  // platform services current at that call, and counts in the counters current at each report.
  [[nodiscard]] static const std::shared_ptr<AnalyticsReporting>& standardReporter();
};

}  // namespace quenlet
