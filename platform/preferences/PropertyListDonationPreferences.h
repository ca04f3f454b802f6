#pragma once

#include <filesystem>
#include <memory>
#include <optional>

#include "platform/files/PropertyListFile.h"
#include "platform/foundation/Mutex.h"
#include "platform/foundation/ProblemReporter.h"
#include "platform/preferences/DonationPreferences.h"
#include "platform/scheduling/EventLoop.h"

namespace quenlet {

// Posted after each change that setDonationsEnabled() makes, for observers that cannot watch files.
inline constexpr char DonationPreferencesDidChangeNotification[] =
    "ovaro.quenlet.donation-preferences-did-change";

// Preferences in a property-list file that people may edit and other programs may write.
// Thread-safe; must be held by a shared pointer. Other keys in the file survive each write.
//
// While the file cannot be read, the last value read counts: neither damage nor an editor at work
// may switch donations back on. If no value was read yet, the preference is unknown, since the file
// may say that donations are off; that is reported on standard error once.
class PropertyListDonationPreferences final : public DonationPreferences {
 public:
  // `eventLoop` watches the file; changes by setDonationsEnabled() are posted to
  // `notificationCenter`.
  PropertyListDonationPreferences(
      std::filesystem::path path, std::shared_ptr<DataProxy> dataProxy, EventLoop& eventLoop,
      std::shared_ptr<DistributedNotificationCenter> notificationCenter);

  // A value that is not a boolean counts as never set. False while the preference is unknown.
  [[nodiscard]] bool isDonationsEnabled() override;
  // Blocks until the file layer's writer thread has written: do not call it on that thread.
  [[nodiscard]] ErrorPtr setDonationsEnabled(bool enabled) override;
  // Delivers the current value, if it is known, on the subscriber's thread, then values that differ
  // from the one delivered before on the event loop's. Notices changes by watching the file and
  // through `notificationCenter`. A subscription keeps the preferences alive until it is cancelled.
  [[nodiscard]] std::shared_ptr<Observable<bool>> observableWithPreferences(
      std::shared_ptr<DistributedNotificationCenter> notificationCenter,
      std::shared_ptr<SchedulerProvider> schedulerProvider) override;

 private:
  [[nodiscard]] std::optional<bool> donationsEnabled() EXCLUDES(mutex);

  const PropertyListFile file;
  EventLoop& eventLoop;
  const std::shared_ptr<DistributedNotificationCenter> notificationCenter;
  Mutex mutex;
  std::optional<bool> lastRead GUARDED_BY(mutex);
  ProblemReporter problems;
};

}  // namespace quenlet
