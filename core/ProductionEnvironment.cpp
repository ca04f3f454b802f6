#include "core/ProductionEnvironment.h"

#include "platform/PlatformServices.h"

namespace quenlet {
namespace {

// The stored object, made by `make` on the first read.
template <typename T, typename Make>
std::shared_ptr<T> stored(std::shared_ptr<T>& member, const Make& make) {
  if (!member) member = make();
  return member;
}

}  // namespace

std::shared_ptr<SchedulerProvider> ProductionEnvironment::schedulerProvider() {
  return stored(storage.schedulerProvider, PlatformServices::current().defaultSchedulerProvider);
}

std::shared_ptr<AgentLogger> ProductionEnvironment::logger() {
  return stored(storage.logger,
                [] { return PlatformServices::current().defaultLoggerProvider()->agentLogger(); });
}

std::shared_ptr<DataProxy> ProductionEnvironment::dataProxy() {
  return stored(storage.dataProxy, PlatformServices::current().makeDataProxy);
}

std::shared_ptr<DonationPreferences> ProductionEnvironment::donationPreferences() {
  return stored(storage.donationPreferences, PlatformServices::current().makeDonationPreferences);
}

std::shared_ptr<DistributedNotificationCenter>
ProductionEnvironment::distributedNotificationCenter() {
  return stored(storage.distributedNotificationCenter, &defaultDistributedNotificationCenter);
}

std::shared_ptr<DonationFeedbackStore> ProductionEnvironment::feedbackStore() {
  return stored(storage.feedbackStore, PlatformServices::current().makeDonationFeedbackStore);
}

void ProductionEnvironment::setSchedulerProvider(std::shared_ptr<SchedulerProvider> provider) {
  storage.schedulerProvider = std::move(provider);
}

void ProductionEnvironment::setLogger(std::shared_ptr<AgentLogger> logger) {
  storage.logger = std::move(logger);
}

void ProductionEnvironment::setDataProxy(std::shared_ptr<DataProxy> proxy) {
  storage.dataProxy = std::move(proxy);
}

void ProductionEnvironment::setDonationPreferences(
    std::shared_ptr<DonationPreferences> preferences) {
  storage.donationPreferences = std::move(preferences);
}

void ProductionEnvironment::setDistributedNotificationCenter(
    std::shared_ptr<DistributedNotificationCenter> center) {
  storage.distributedNotificationCenter = std::move(center);
}

void ProductionEnvironment::setFeedbackStore(std::shared_ptr<DonationFeedbackStore> store) {
  storage.feedbackStore = std::move(store);
}

std::shared_ptr<DistributedNotificationCenter>
ProductionEnvironment::defaultDistributedNotificationCenter() {
  return PlatformServices::current().defaultDistributedNotificationCenter();
}

}  // namespace quenlet
