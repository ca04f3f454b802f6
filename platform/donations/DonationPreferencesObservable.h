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
// if it is known, then on the event loop's thread each value that differs from the one before.
// Never completes. Thread-safe. A subscription keeps what it needs alive until its token is
// cancelled; a token that is cancelled on the loop's thread stops delivery at once.
class DonationPreferencesObservable final : public Observable<bool> {
 public:
  // The preference as it is now; nothing while it is unknown. On any thread.
  using Read = std::function<std::optional<bool>()>;

  // `file` is where the preferences are kept; it is watched as long as somebody is subscribed.
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
