#pragma once

#include <functional>
#include <memory>
#include <string>

#include "platform/accounts/Account.h"
#include "platform/contacts/ContactStore.h"
#include "platform/counters/CounterStore.h"
#include "platform/extensions/DonorExtension.h"
#include "platform/feedback/DonationFeedbackStore.h"
#include "platform/files/DataProxy.h"
#include "platform/foundation/Observable.h"
#include "platform/ipc/ServiceListener.h"
#include "platform/logging/DonationLoggerProvider.h"
#include "platform/logging/SystemLog.h"
#include "platform/notifications/DistributedNotificationCenter.h"
#include "platform/preferences/DonationPreferences.h"
#include "platform/preferences/UserDefaults.h"
#include "platform/scheduling/ProcessTransaction.h"
#include "platform/scheduling/Scheduler.h"
#include "platform/telephony/Telephony.h"
#include "protocol/CorvelProtocol.h"
#include "quenlet/Date.h"

namespace quenlet {

// The only seam to the platform: a factory for each service that code fetches itself instead of
// being given it. Members named make… return an object for the caller to keep; where two objects
// would interfere (makeDataProxy, makeDonationFeedbackStore, makePhoneNumberMonitor), all callers
// get the same one. The others return the one that the process shares.
//
// A process has one current set. LinuxPlatform installs the real one for its lifetime; a test swaps
// in its own with a Scope.
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

  // Donations of the extensions go to `donationReceiver` while that exists.
  std::function<std::shared_ptr<DonorLoader>(std::weak_ptr<CorvelProtocol> donationReceiver)>
      makeDonorLoader;
  // Emits the installed donors one by one, then completes or fails, all during subscribe().
  std::function<std::shared_ptr<Observable<DonorObjectPtr>>(
      std::weak_ptr<CorvelProtocol> donationReceiver)>
      currentExtensionsObservable;
  std::function<std::shared_ptr<AccountStore>()> makeAccountStore;
  std::function<std::shared_ptr<PhoneNumberMonitor>()> makePhoneNumberMonitor;
  std::function<std::shared_ptr<DeviceInfo>()> deviceInfo;

  std::function<std::shared_ptr<UserDefaults>()> userDefaults;
  std::function<std::shared_ptr<CounterStore>()> counterStore;
  std::function<std::shared_ptr<SystemLog>(const std::string& subsystem,
                                           const std::string& category)>
      makeSystemLog;
  std::function<std::shared_ptr<ProcessTransaction>(const std::string& name)>
      makeProcessTransaction;

  // The current set; one must be installed. Any thread.
  [[nodiscard]] static const PlatformServices& current();

  // Installs a set from construction to destruction, then restores the former one. Scopes must end
  // in reverse order, while no other thread uses the services.
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
