#include "platform/preferences/DonationPreferencesObservable.h"

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "platform/files/DirectoryWatch.h"
#include "platform/foundation/Mutex.h"
#include "platform/preferences/PropertyListDonationPreferences.h"

namespace quenlet {
namespace {

// Every hint of a change leads to check(), which runs on the loop's thread only: values are
// delivered in the order in which they were read. The exception is the first value, which start()
// delivers on the subscriber's thread; check() does nothing before that is over.
class Subscription final : public std::enable_shared_from_this<Subscription> {
 public:
  Subscription(DonationPreferencesObservable::Read readPreference, Observer<bool> told)
      : read(std::move(readPreference)), observer(std::move(told)) {}

  // `registrations` call check(); they are cancelled with the subscription.
  void start(std::vector<std::shared_ptr<Cancelable>> registrations, EventLoop& eventLoop) {
    const std::optional<bool> value = read();
    if (value) deliver(*value);
    {
      MutexLock lock(mutex);
      hints = std::move(registrations);
      delivered = value;
      started = true;
    }
    // Hints during the first delivery were ignored; this makes up for them.
    eventLoop.post([self = shared_from_this()] { self->check(); });
  }

  void check() EXCLUDES(mutex) {
    if (!isRunning()) return;
    const std::optional<bool> value = read();
    {
      MutexLock lock(mutex);
      if (cancelled || !value || delivered == value) return;
      delivered = value;
    }
    deliver(*value);
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
    return !cancelled && started;
  }

  void deliver(bool value) const {
    if (observer.resultBlock) observer.resultBlock(value);
  }

  const DonationPreferencesObservable::Read read;
  const Observer<bool> observer;
  Mutex mutex;
  std::vector<std::shared_ptr<Cancelable>> hints GUARDED_BY(mutex);
  std::optional<bool> delivered GUARDED_BY(mutex);
  bool started GUARDED_BY(mutex) = false;  // the first delivery is over
  bool cancelled GUARDED_BY(mutex) = false;
};

}  // namespace

DonationPreferencesObservable::DonationPreferencesObservable(
    Read read, std::filesystem::path file, EventLoop& eventLoop,
    std::shared_ptr<DistributedNotificationCenter> notificationCenter)
    : read(std::move(read)),
      file(std::move(file)),
      eventLoop(eventLoop),
      notificationCenter(std::move(notificationCenter)) {}

std::shared_ptr<Cancelable> DonationPreferencesObservable::subscribe(Observer<bool> observer) {
  const auto subscription = std::make_shared<Subscription>(read, std::move(observer));
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
