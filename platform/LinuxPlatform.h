#pragma once

#include <filesystem>
#include <memory>
#include <mutex>

#include "platform/PlatformServices.h"
#include "platform/accounts/PropertyListAccountStore.h"
#include "platform/contacts/VCardContactStore.h"
#include "platform/extensions/ExtensionHost.h"
#include "platform/feedback/FeedbackFile.h"
#include "platform/files/LockFile.h"
#include "platform/files/PosixDataProxy.h"
#include "platform/ipc/EntitlementDatabase.h"
#include "platform/ipc/HandedSockets.h"
#include "platform/notifications/MeCardFileWatch.h"
#include "platform/notifications/SocketNotificationCenter.h"
#include "platform/preferences/PropertyListDonationPreferences.h"
#include "platform/scheduling/ProductionSchedulerProvider.h"
#include "platform/scheduling/RunLoop.h"

namespace quenlet {

// The platform services of a Linux user, installed as the current ones for the lifetime of this
// object. Create it first thing on the main thread: it starts the first threads and blocks the
// signals that the run loop reads. From then on, writing to standard output or error does not wait
// for a slow reader. From the first contact store on, it watches the owner's card and posts the
// notification of its changes.
//
// The destructor waits for the pending work of its schedulers and its file layer.
class LinuxPlatform final {
 public:
  // An error when the user has no home or runtime directory, or the system is out of resources.
  // Raises the process's soft limit of open files as far as the system permits, up to 65,536; donor
  // extensions get the former limit. The first service listener gets `handed`.
  [[nodiscard]] static Result<std::unique_ptr<LinuxPlatform>> open(HandedSockets handed);
  ~LinuxPlatform();
  LinuxPlatform(const LinuxPlatform&) = delete;
  LinuxPlatform& operator=(const LinuxPlatform&) = delete;

  // Makes this process the only one to keep donations in this home, for the lifetime of this
  // object. The service's name is not enough: a session with another runtime directory has its own
  // names, but the same files, and two agents would undo each other's changes. A nameTaken error
  // when another process has the lock, a POSIX error when it cannot be taken.
  [[nodiscard]] ErrorPtr claimDonations();
  // Null if the donations, the feedback and the preferences of this home can be read or do not
  // exist: a sound file that cannot be read must not be taken for an empty one and replaced. Waits
  // up to 2 s while the system is short of descriptors or memory. Changes nothing.
  [[nodiscard]] ErrorPtr examineFiles();

  [[nodiscard]] RunLoop& mainRunLoop() { return runLoop; }
  // For a process that exits without destroying this object: ends the running donor extensions,
  // removes this process's notification socket, and waits up to a second for the log to be written.
  // Call it after the run loop has returned.
  void finish();

 private:
  LinuxPlatform(const std::filesystem::path& homeDirectory,
                const std::filesystem::path& runtimeDirectory,
                const ExtensionLimits& extensionLimits, HandedSockets handed);
  [[nodiscard]] PlatformServices makeServices();
  void addListener(PlatformServices& services);
  void addSources(PlatformServices& services);
  void addAnalytics(PlatformServices& services);
  void watchMeCard();
  [[nodiscard]] std::shared_ptr<ProcessTransaction> beginTransaction(const std::string& name);
  [[nodiscard]] std::filesystem::path meCardPath() const {
    return library.parent_path() / MeCardPath;
  }
  [[nodiscard]] std::filesystem::path feedbackPath() const {
    return library.parent_path() / FeedbackPath;
  }
  [[nodiscard]] std::filesystem::path preferencesPath() const {
    return library.parent_path() / PreferencesPath;
  }

  const std::filesystem::path library;
  HandedSockets handedSockets;
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
  // Last: installed once everything above exists, and removed first.
  const PlatformServices::Scope scope;
};

}  // namespace quenlet
