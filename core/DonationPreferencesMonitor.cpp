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
  // The first value comes before subscribe() returns, so the lock must be free.
  auto token = observable->subscribe(
      Observer<bool>::observerWithResultBlock([weakSelf = weak_from_this()](const bool& enabled) {
        if (const auto self = weakSelf.lock()) self->preferenceDelivered(enabled);
      }));
  MutexLock lock(mutex);
  notificationToken = std::move(token);
}

void DonationPreferencesMonitor::stopMonitoring() {
  std::shared_ptr<Cancelable> subscription;
  {
    MutexLock lock(mutex);
    subscription.swap(notificationToken);
  }
  if (subscription) subscription->cancel();
  replaceDelay(nullptr);
}

void DonationPreferencesMonitor::preferenceDelivered(bool enabled) {
  if (const auto suppress = onSuppress()) suppress(!enabled);
  if (!enabled) {
    startDelay();
    return;
  }
  if (replaceDelay(nullptr)) return;
  if (const auto enable = onEnable()) enable(true);
}

void DonationPreferencesMonitor::startDelay() {
  replaceDelay(nullptr);
  // The second replacement finds a delay only when values are delivered on two threads at once.
  replaceDelay(schedulerProvider->backgroundScheduler()->afterDelay(
      disableDelaySeconds, [weakSelf = weak_from_this()] {
        const auto self = weakSelf.lock();
        if (const auto enable = self ? self->onEnable() : nullptr) enable(false);
      }));
}

bool DonationPreferencesMonitor::replaceDelay(std::shared_ptr<Cancelable> next) {
  {
    MutexLock lock(mutex);
    next.swap(delayToken);
  }
  if (next) next->cancel();
  return next != nullptr;
}

}  // namespace quenlet
