#include "core/DonationPreferencesMonitor.h"

namespace quenlet {

DonationPreferencesMonitor::DonationPreferencesMonitor(
    const std::shared_ptr<DonationPreferences>& preferences,
    std::shared_ptr<DistributedNotificationCenter> notificationCenter,
    const std::shared_ptr<SchedulerProvider>& schedulerProvider)
    : DonationPreferencesMonitor(
          preferences->observableWithPreferences(std::move(notificationCenter), schedulerProvider),
          schedulerProvider) {}

DonationPreferencesMonitor::DonationPreferencesMonitor(std::shared_ptr<Observable<bool>> observable,
                                                       std::shared_ptr<SchedulerProvider> provider)
    : observable(std::move(observable)), schedulerProvider(std::move(provider)) {}

std::function<void(bool)> DonationPreferencesMonitor::onSuppress() const {
  MutexLock lock(mutex);
  return suppressCallback;
}

void DonationPreferencesMonitor::setOnSuppress(std::function<void(bool)> callback) {
  MutexLock lock(mutex);
  suppressCallback = std::move(callback);
}

std::function<void(bool)> DonationPreferencesMonitor::onEnable() const {
  MutexLock lock(mutex);
  return enableCallback;
}

void DonationPreferencesMonitor::setOnEnable(std::function<void(bool)> callback) {
  MutexLock lock(mutex);
  enableCallback = std::move(callback);
}

void DonationPreferencesMonitor::startMonitoring() {
  std::shared_ptr<Cancelable> former;
  {
    MutexLock lock(mutex);
    former.swap(notificationToken);
  }
  if (former) former->cancel();
  auto token = observable->subscribe(
      Observer<bool>::observerWithResultBlock([weakSelf = weak_from_this()](const bool& enabled) {
        if (const auto self = weakSelf.lock()) self->preferenceDelivered(enabled);
      }));
  MutexLock lock(mutex);
  notificationToken = std::move(token);
}

void DonationPreferencesMonitor::stopMonitoring() {
  std::shared_ptr<Cancelable> subscription;
  std::shared_ptr<Cancelable> delay;
  {
    MutexLock lock(mutex);
    subscription.swap(notificationToken);
    delay.swap(delayToken);
  }
  if (subscription) subscription->cancel();
  if (delay) delay->cancel();
}

void DonationPreferencesMonitor::preferenceDelivered(bool enabled) {
  if (const auto suppress = onSuppress()) suppress(!enabled);
  if (!enabled) {
    startDelay();
    return;
  }
  std::shared_ptr<Cancelable> delay;
  {
    MutexLock lock(mutex);
    delay.swap(delayToken);
  }
  if (delay) {
    delay->cancel();
  } else if (const auto enable = onEnable()) {
    enable(true);
  }
}

void DonationPreferencesMonitor::startDelay() {
  std::shared_ptr<Cancelable> delay = schedulerProvider->backgroundScheduler()->afterDelay(
      disableDelaySeconds, [weakSelf = weak_from_this()] {
        const auto self = weakSelf.lock();
        if (const auto enable = self ? self->onEnable() : nullptr) enable(false);
      });
  {
    MutexLock lock(mutex);
    delay.swap(delayToken);
  }
  if (delay) delay->cancel();
}

}  // namespace quenlet
