#pragma once

#include <filesystem>
#include <functional>
#include <memory>
#include <optional>

#include "platform/foundation/Observable.h"
#include "platform/notifications/DistributedNotificationCenter.h"
#include "platform/scheduling/EventLoop.h"

namespace quenlet {

// The donations-enabled preference over time: the value at subscribe(), delivered during that call
// if it is known, then each value that differs from the one before, on the event loop's thread.
// Never completes. Thread-safe. A subscription keeps what it needs alive until its token is
// cancelled. Cancelled on the loop's thread, it delivers nothing more; on another thread, a
// delivery may still be under way.
class DonationPreferencesObservable final : public Observable<bool> {
 public:
  // Returns the current preference; nothing while it is unknown. Called on any thread.
  using Read = std::function<std::optional<bool>()>;

  // `file` holds the preferences. Each subscription watches it.
  DonationPreferencesObservable(Read read, std::filesystem::path file, EventLoop& eventLoop,
                                std::shared_ptr<DistributedNotificationCenter> notificationCenter);

  [[nodiscard]] std::shared_ptr<Cancelable> subscribe(Observer<bool> observer) override;

 private:
  const Read read;
  const std::filesystem::path file;
  EventLoop& eventLoop;
  const std::shared_ptr<DistributedNotificationCenter> notificationCenter;
};

}  // namespace quenlet
