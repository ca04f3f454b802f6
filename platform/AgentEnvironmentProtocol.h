#pragma once

#include <memory>

#include "platform/feedback/DonationFeedbackStore.h"
#include "platform/files/DataProxy.h"
#include "platform/logging/AgentLogger.h"
#include "platform/notifications/DistributedNotificationCenter.h"
#include "platform/preferences/DonationPreferences.h"
#include "platform/scheduling/Scheduler.h"

namespace quenlet {

// The agent's collaborators that touch the platform, in one place where a test can replace each.
// Used on the main thread during start-up, before other threads have access.
class AgentEnvironmentProtocol {
 public:
  virtual ~AgentEnvironmentProtocol() = default;
  [[nodiscard]] virtual std::shared_ptr<SchedulerProvider> schedulerProvider() = 0;
  [[nodiscard]] virtual std::shared_ptr<AgentLogger> logger() = 0;
  [[nodiscard]] virtual std::shared_ptr<DataProxy> dataProxy() = 0;
  [[nodiscard]] virtual std::shared_ptr<DonationPreferences> donationPreferences() = 0;
  [[nodiscard]] virtual std::shared_ptr<DistributedNotificationCenter>
  distributedNotificationCenter() = 0;
  [[nodiscard]] virtual std::shared_ptr<DonationFeedbackStore> feedbackStore() = 0;
};

}  // namespace quenlet
