#pragma once

#include <memory>

#include "platform/foundation/Observable.h"
#include "platform/notifications/DistributedNotificationCenter.h"
#include "platform/scheduling/Scheduler.h"
#include "quenlet/Error.h"

namespace quenlet {

// The owner's preferences on donations. Thread-safe.
class DonationPreferences : public std::enable_shared_from_this<DonationPreferences> {
 public:
  virtual ~DonationPreferences() = default;
  // The donations-enabled preference: true if it was never set, false while it is unknown.
  [[nodiscard]] virtual bool isDonationsEnabled() = 0;
  // Durable when it returns null. After an error nothing has changed.
  [[nodiscard]] virtual ErrorPtr setDonationsEnabled(bool enabled) = 0;
  // Delivers the donations-enabled preference during subscribe() and after each change by any
  // process. Delivers nothing while the preference is unknown, that is, may have been set but
  // cannot be read. Never completes.
  [[nodiscard]] virtual std::shared_ptr<Observable<bool>> observableWithPreferences(
      std::shared_ptr<DistributedNotificationCenter> notificationCenter,
      std::shared_ptr<SchedulerProvider> schedulerProvider) = 0;
};

}  // namespace quenlet
