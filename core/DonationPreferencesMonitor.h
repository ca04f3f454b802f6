#pragma once

#include <functional>
#include <memory>

#include "platform/foundation/Mutex.h"
#include "platform/preferences/DonationPreferences.h"
#include "platform/scheduling/Scheduler.h"

namespace quenlet {

// Turns the donations-enabled preference into two callbacks: onSuppress at once with each value,
// and onEnable when donations come on, or have stayed off for `disableDelaySeconds`.
//
//   value | delay pending | calls and effects
//   off   | any           | onSuppress(true); the delay starts anew; at its end onEnable(false)
//   on    | yes           | onSuppress(false); the delay is called off and forgotten
//   on    | no            | onSuppress(false), onEnable(true)
//
// A delay counts as pending until a value "on" forgets it, even after its end: the first "on" after
// donations have been off for long calls onSuppress alone. Callbacks run on the thread that
// delivers values and, after the delay, on the background scheduler; no lock is held. Thread-safe.
class DonationPreferencesMonitor final
    : public std::enable_shared_from_this<DonationPreferencesMonitor> {
 public:
  static constexpr double disableDelaySeconds = 30.0;

  DonationPreferencesMonitor(const std::shared_ptr<DonationPreferences>& preferences,
                             std::shared_ptr<DistributedNotificationCenter> notificationCenter,
                             const std::shared_ptr<SchedulerProvider>& schedulerProvider);
  DonationPreferencesMonitor(std::shared_ptr<Observable<bool>> observable,
                             std::shared_ptr<SchedulerProvider> schedulerProvider);

  [[nodiscard]] std::function<void(bool)> onSuppress() const EXCLUDES(mutex);
  // Called with true when donations are off.
  void setOnSuppress(std::function<void(bool)> callback) EXCLUDES(mutex);
  [[nodiscard]] std::function<void(bool)> onEnable() const EXCLUDES(mutex);
  void setOnEnable(std::function<void(bool)> callback) EXCLUDES(mutex);

  // Subscribes to the preference; an earlier subscription is cancelled first.
  void startMonitoring() EXCLUDES(mutex);
  // Cancels the subscription and the pending delay.
  void stopMonitoring() EXCLUDES(mutex);

 private:
  void preferenceDelivered(bool enabled) EXCLUDES(mutex);
  void startDelay() EXCLUDES(mutex);
  // Cancels the pending delay and puts `next` in its place. False when none was pending.
  bool replaceDelay(std::shared_ptr<Cancelable> next) EXCLUDES(mutex);

  const std::shared_ptr<Observable<bool>> observable;
  const std::shared_ptr<SchedulerProvider> schedulerProvider;
  mutable Mutex mutex;
  std::function<void(bool)> suppressCallback GUARDED_BY(mutex);
  std::function<void(bool)> enableCallback GUARDED_BY(mutex);
  std::shared_ptr<Cancelable> notificationToken GUARDED_BY(mutex);
  std::shared_ptr<Cancelable> delayToken GUARDED_BY(mutex);
};

}  // namespace quenlet
