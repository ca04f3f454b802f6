#pragma once

#include <filesystem>
#include <memory>
#include <optional>

#include "platform/donations/DonationPreferences.h"
#include "platform/donations/PropertyListFile.h"
#include "platform/foundation/Mutex.h"
#include "platform/foundation/ProblemReporter.h"
#include "platform/scheduling/EventLoop.h"

namespace quenlet {

// Posted after each change that setDonationsEnabled() makes, for observers that cannot watch files.
inline constexpr char DonationPreferencesDidChangeNotification[] =
    "ovaro.quenlet.donation-preferences-did-change";

// Preferences in a property-list file, which people may edit and other programs may write.
// Thread-safe; held by a shared pointer. Other keys in the file survive each write.
//
// While the file cannot be read, the value read last counts, so that neither damage nor an editor
// at work switches donations back on. Before the first value the preference is unknown, which is
// said on standard error once: somebody may have switched donations off in there.
class PropertyListDonationPreferences final : public DonationPreferences {
 public:
  // Changes of the file are heard on `eventLoop`; `notificationCenter` is where own changes are
  // posted.
  PropertyListDonationPreferences(
      std::filesystem::path path, std::shared_ptr<DataProxy> dataProxy, EventLoop& eventLoop,
      std::shared_ptr<DistributedNotificationCenter> notificationCenter);

  // Anything but a boolean in the file counts as never set. False while the preference is unknown.
  [[nodiscard]] bool isDonationsEnabled() override;
  // Waits for the file layer's writer thread: do not call it there.
  [[nodiscard]] ErrorPtr setDonationsEnabled(bool enabled) override;
  // Delivers the value that counts at the subscription, if it is known, on the subscriber's thread,
  // and then values that differ from the one delivered before on the event loop's. Hears of changes
  // by watching the file and by `notificationCenter`. A subscription keeps the preferences alive
  // until cancelled.
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
