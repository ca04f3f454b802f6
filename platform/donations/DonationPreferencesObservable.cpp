#include "platform/donations/DonationPreferencesObservable.h"

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "platform/donations/PropertyListDonationPreferences.h"
#include "platform/files/DirectoryWatch.h"
#include "platform/foundation/Mutex.h"

namespace quenlet {
namespace {

// Whatever may have changed the preference leads to check(), which runs on the loop's thread alone,
// so that values are delivered in the order in which they were read.
class Subscription final : public std::enable_shared_from_this<Subscription> {
 public:
  Subscription(std::shared_ptr<DonationPreferences> read, Observer<bool> told)
      : preferences(std::move(read)), observer(std::move(told)) {}

  // `registrations` are what calls check(); they end with the subscription.
  void start(std::vector<std::shared_ptr<Cancelable>> registrations, EventLoop& eventLoop) {
    const bool value = preferences->isDonationsEnabled();
    deliver(value);
    {
      MutexLock lock(mutex);
      hints = std::move(registrations);
      delivered = value;
    }
    // What was hinted at during the first delivery was left for now.
    eventLoop.post([self = shared_from_this()] { self->check(); });
  }

  void check() EXCLUDES(mutex) {
    if (!isRunning()) return;
    const bool value = preferences->isDonationsEnabled();
    {
      MutexLock lock(mutex);
      if (cancelled || delivered == value) return;
      delivered = value;
    }
    deliver(value);
  }

  void cancel() EXCLUDES(mutex) {
    std::vector<std::shared_ptr<Cancelable>> dropped;
    {
      MutexLock lock(mutex);
      cancelled = true;
      dropped.swap(hints);
    }
    for (const auto& hint : dropped) hint->cancel();
  }

 private:
  bool isRunning() EXCLUDES(mutex) {
    MutexLock lock(mutex);
    return !cancelled && delivered.has_value();
  }

  void deliver(bool value) const {
    if (observer.resultBlock) observer.resultBlock(value);
  }

  const std::shared_ptr<DonationPreferences> preferences;
  const Observer<bool> observer;
  Mutex mutex;
  std::vector<std::shared_ptr<Cancelable>> hints GUARDED_BY(mutex);
  std::optional<bool> delivered GUARDED_BY(mutex);  // absent during the first delivery
  bool cancelled GUARDED_BY(mutex) = false;
};

}  // namespace

DonationPreferencesObservable::DonationPreferencesObservable(
    std::shared_ptr<DonationPreferences> preferences, std::filesystem::path file,
    EventLoop& eventLoop, std::shared_ptr<DistributedNotificationCenter> notificationCenter)
    : preferences(std::move(preferences)),
      file(std::move(file)),
      eventLoop(eventLoop),
      notificationCenter(std::move(notificationCenter)) {}

std::shared_ptr<Cancelable> DonationPreferencesObservable::subscribe(Observer<bool> observer) {
  const auto subscription = std::make_shared<Subscription>(preferences, std::move(observer));
  auto watching = DirectoryWatch::watchDirectory(
      eventLoop, file.parent_path(),
      [subscription, name = file.filename().string()](const std::string& changed) {
        if (changed.empty() || changed == name) subscription->check();
      });
  auto listening = notificationCenter->addObserver(
      DonationPreferencesDidChangeNotification,
      [subscription, &loop = eventLoop] { loop.post([subscription] { subscription->check(); }); });
  subscription->start({std::move(watching), std::move(listening)}, eventLoop);
  return std::make_shared<CancelBlock>([subscription] { subscription->cancel(); });
}

}  // namespace quenlet
