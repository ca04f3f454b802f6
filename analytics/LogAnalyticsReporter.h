#pragma once

#include <initializer_list>
#include <memory>
#include <string>

#include "analytics/AnalyticsReporting.h"
#include "platform/logging/SystemLog.h"

namespace quenlet {

// Writes reports to the system log as lines for people, under subsystem "ovaro.quenlet" and
// category "analytics". Lines hold numbers, never values. Immutable, thread-safe.
class LogAnalyticsReporter final : public AnalyticsReporting {
 public:
  // Opens the log of the current platform services.
  LogAnalyticsReporter();

  void reportNumberOfMeCards(std::uint64_t count) override;
  void reportHasNameComponents(bool hasNameComponents, bool hasEmailAddress, bool hasPhoneNumber,
                               bool hasPostalAddress) override;
  void reportAugmentationStatus(const AugmentationStatus& status) override;
  [[nodiscard]] std::string description() const override;

 private:
  void writeLines(std::initializer_list<std::string> lines) const;

  const std::shared_ptr<SystemLog> log_t;
};

}  // namespace quenlet
