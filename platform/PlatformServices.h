#pragma once

#include <functional>
#include <memory>
#include <string>

#include "platform/contacts/ContactStore.h"
#include "platform/donations/DonationFeedbackStore.h"
#include "platform/donations/DonationPreferences.h"
#include "platform/files/DataProxy.h"
#include "platform/foundation/Date.h"
#include "platform/ipc/ServiceListener.h"
#include "platform/logging/DonationLoggerProvider.h"
#include "platform/notifications/DistributedNotificationCenter.h"
#include "platform/scheduling/SchedulerProvider.h"

namespace quenlet {

// The one seam to the platform: a factory for each service that code takes from the platform
// itself instead of being given it. Members named make… give a new object at each call, the others
// the one that the process shares.
//
// There is one current set in a process. LinuxPlatform installs the real one for its life; a test
// swaps in its own for a Scope.
struct PlatformServices final {
  std::function<Date()> now;
  std::function<std::shared_ptr<SchedulerProvider>()> defaultSchedulerProvider;
  std::function<std::shared_ptr<Scheduler>()> globalAsynchronousScheduler;
  std::function<std::shared_ptr<DonationLoggerProvider>()> defaultLoggerProvider;
  std::function<std::shared_ptr<DistributedNotificationCenter>()>
      defaultDistributedNotificationCenter;
  std::function<std::shared_ptr<DataProxy>()> makeDataProxy;
  std::function<std::shared_ptr<DonationPreferences>()> makeDonationPreferences;
  std::function<std::shared_ptr<DonationFeedbackStore>()> makeDonationFeedbackStore;
  std::function<std::shared_ptr<ContactStore>()> makeContactStore;
  std::function<std::shared_ptr<ServiceListener>(const std::string& serviceName)>
      makeServiceListener;

  // The current set. Requires that one is installed. Any thread.
  [[nodiscard]] static const PlatformServices& current();

  // Makes a set the current one from construction to destruction, then brings back the former one.
  // Scopes end in reverse order, while no other thread uses the services.
  class Scope final {
   public:
    explicit Scope(PlatformServices services);
    ~Scope();
    Scope(const Scope&) = delete;
    Scope& operator=(const Scope&) = delete;

   private:
    std::unique_ptr<const PlatformServices> installed;
    const PlatformServices* former;
  };
};

}  // namespace quenlet
