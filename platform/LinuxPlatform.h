#pragma once

#include <filesystem>
#include <memory>
#include <mutex>

#include "platform/PlatformServices.h"
#include "platform/accounts/AccountFileProblems.h"
#include "platform/donations/PropertyListDonationPreferences.h"
#include "platform/extensions/ExtensionHost.h"
#include "platform/files/LockFile.h"
#include "platform/files/PosixDataProxy.h"
#include "platform/ipc/EntitlementDatabase.h"
#include "platform/notifications/MeCardFileWatch.h"
#include "platform/notifications/SocketNotificationCenter.h"
#include "platform/scheduling/ProductionSchedulerProvider.h"
#include "platform/scheduling/RunLoop.h"

namespace quenlet {

// The platform services of a Linux user, installed as the current ones for this object's life. Make
// it first thing on the main thread: it starts the process's threads and blocks the signals that
// the run loop reads. The process's output no longer waits for its readers. From the first contact
// store on, it watches the owner's card and posts the notification of its changes.
//
// Its end waits for what its schedulers and its file layer still have to do.
class LinuxPlatform final {
 public:
  // An error when the user has no home or runtime directory, or the system no resources left.
  // Raises the process's limit of open files as far as the system lets it, to 65,536 at most; donor
  // extensions keep the limit from before.
  [[nodiscard]] static Result<std::unique_ptr<LinuxPlatform>> open();
  ~LinuxPlatform();
  LinuxPlatform(const LinuxPlatform&) = delete;
  LinuxPlatform& operator=(const LinuxPlatform&) = delete;

  // Makes this process the only one that keeps donations in this home, for this object's life: a
  // session with another runtime directory has service names of its own, but the same files. An
  // error when another process does so already (nameTaken), and a posix error when the lock cannot
  // be had: without it two agents would undo each other's changes.
  [[nodiscard]] ErrorPtr claimDonations();
  // Whether the donations, the feedback and the preferences of this home can be read, as far as
  // they exist: a sound file that the system does not hand out must not be taken for an empty one
  // and replaced. Waits up to 2 s for a system that is short of descriptors or memory. Changes
  // nothing.
  [[nodiscard]] ErrorPtr examineFiles();

  [[nodiscard]] RunLoop& mainRunLoop() { return runLoop; }
  // Ends the donor extensions that run, takes this process's socket of notifications away and gives
  // the log a second to go out, for a process that ends without this object's end. Once the run
  // loop has returned.
  void finish();

 private:
  LinuxPlatform(const std::filesystem::path& homeDirectory,
                const std::filesystem::path& runtimeDirectory,
                const ExtensionLimits& extensionLimits);
  [[nodiscard]] PlatformServices makeServices();
  void addSources(PlatformServices& services);
  void addAnalytics(PlatformServices& services);
  void watchMeCard();
  [[nodiscard]] std::shared_ptr<ProcessTransaction> beginTransaction(const std::string& name);
  [[nodiscard]] std::filesystem::path meCardPath() const { return library / "Contacts" / "me.vcf"; }
  [[nodiscard]] std::filesystem::path feedbackPath() const {
    return library / "Contacts" / "Feedback" / "feedback.plist";
  }
  [[nodiscard]] std::filesystem::path preferencesPath() const {
    return library.parent_path() / PreferencesPath;
  }

  const std::filesystem::path library;
  std::shared_ptr<LockFile> donationsLock;
  RunLoop runLoop;
  const std::shared_ptr<SchedulerProvider> schedulerProvider;
  const std::shared_ptr<PosixDataProxy> dataProxy;
  const std::shared_ptr<DonationLoggerProvider> loggerProvider;
  const std::shared_ptr<SocketNotificationCenter> notificationCenter;
  const std::shared_ptr<EntitlementDatabase> entitlements;
  const std::shared_ptr<Cancelable> entitlementsWatch;
  const std::shared_ptr<Cancelable> entitlementsHangUp;
  std::once_flag feedbackStoreMade;
  std::shared_ptr<DonationFeedbackStore> feedbackStore;
  const std::shared_ptr<ExtensionHost> extensionHost;
  const std::shared_ptr<AccountFileProblems> accountFileProblems =
      std::make_shared<AccountFileProblems>();
  const std::shared_ptr<PhoneNumberMonitor> phoneNumberMonitor;
  const std::shared_ptr<DeviceInfo> deviceInfo;
  const std::shared_ptr<UserDefaults> userDefaults;
  const std::shared_ptr<CounterStore> counterStore;
  std::once_flag meCardWatchStarted;
  std::unique_ptr<MeCardFileWatch> meCardWatch;
  const PlatformServices::Scope scope;
};

}  // namespace quenlet
