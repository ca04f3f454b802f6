#pragma once

#include <memory>

#include "platform/foundation/Error.h"
#include "platform/foundation/Observable.h"
#include "platform/notifications/DistributedNotificationCenter.h"
#include "platform/scheduling/SchedulerProvider.h"

namespace quenlet {

// The owner's preferences on donations. Thread-safe.
class DonationPreferences : public std::enable_shared_from_this<DonationPreferences> {
 public:
  virtual ~DonationPreferences() = default;
  // The donations-enabled preference; true when it was never set, false while it is unknown.
  [[nodiscard]] virtual bool isDonationsEnabled() = 0;
  // Durable when it returns; an error when it could not be written, and then nothing changed.
  [[nodiscard]] virtual ErrorPtr setDonationsEnabled(bool enabled) = 0;
  // The donations-enabled preference as it is at subscribe: (delivered during that call) and after
  // each change, whichever process made it. Nothing is delivered while the preference is unknown:
  // it has been set, but what was said cannot be read. Never completes.
  [[nodiscard]] virtual std::shared_ptr<Observable<bool>> observableWithPreferences(
      std::shared_ptr<DistributedNotificationCenter> notificationCenter,
      std::shared_ptr<SchedulerProvider> schedulerProvider) = 0;
};

}  // namespace quenlet
