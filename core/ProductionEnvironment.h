#pragma once

#include "platform/AgentEnvironmentProtocol.h"

namespace quenlet {

// The environment of the real agent. Each member is made from the platform at its first read, then
// kept; a setter replaces it. Getters do not lock: read each member once on one thread before
// others use the environment.
class ProductionEnvironment final : public AgentEnvironmentProtocol {
 public:
  std::shared_ptr<SchedulerProvider> schedulerProvider() override;
  std::shared_ptr<AgentLogger> logger() override;
  std::shared_ptr<DataProxy> dataProxy() override;
  std::shared_ptr<DonationPreferences> donationPreferences() override;
  std::shared_ptr<DistributedNotificationCenter> distributedNotificationCenter() override;
  std::shared_ptr<DonationFeedbackStore> feedbackStore() override;

  void setSchedulerProvider(std::shared_ptr<SchedulerProvider> provider);
  void setLogger(std::shared_ptr<AgentLogger> logger);
  void setDataProxy(std::shared_ptr<DataProxy> proxy);
  void setDonationPreferences(std::shared_ptr<DonationPreferences> preferences);
  void setDistributedNotificationCenter(std::shared_ptr<DistributedNotificationCenter> center);
  void setFeedbackStore(std::shared_ptr<DonationFeedbackStore> store);

  // The platform's own center.
  [[nodiscard]] static std::shared_ptr<DistributedNotificationCenter>
  defaultDistributedNotificationCenter();

 private:
  struct Storage final {
    std::shared_ptr<SchedulerProvider> schedulerProvider;
    std::shared_ptr<AgentLogger> logger;
    std::shared_ptr<DataProxy> dataProxy;
    std::shared_ptr<DonationPreferences> donationPreferences;
    std::shared_ptr<DistributedNotificationCenter> distributedNotificationCenter;
    std::shared_ptr<DonationFeedbackStore> feedbackStore;
  };
  Storage storage;
};

}  // namespace quenlet
