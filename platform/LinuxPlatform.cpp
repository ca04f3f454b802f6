#include "platform/LinuxPlatform.h"

#include <sys/resource.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <system_error>
#include <thread>
#include <utility>

#include "platform/accounts/PropertyListAccountStore.h"
#include "platform/counters/PrometheusCounterStore.h"
#include "platform/feedback/PropertyListFeedbackStore.h"
#include "platform/files/DonationFiles.h"
#include "platform/files/DurableDirectory.h"
#include "platform/files/DurableFileWriter.h"
#include "platform/files/FileReading.h"
#include "platform/files/PosixFileOperations.h"
#include "platform/files/UserDirectories.h"
#include "platform/foundation/StandardStreams.h"
#include "platform/ipc/UnixServiceListener.h"
#include "platform/logging/DonationLoggerProvider.h"
#include "platform/logging/StandardErrorLogSink.h"
#include "platform/logging/SyslogSystemLog.h"
#include "platform/notifications/NotificationDirectory.h"
#include "platform/preferences/PropertyListUserDefaults.h"
#include "platform/telephony/PropertyListDeviceInfo.h"
#include "platform/telephony/PropertyListPhoneNumberMonitor.h"

namespace quenlet {
namespace {

// Distributions keep the soft limit at 1,024 for programs that use select(); the agent does not. If
// the limit cannot be raised, the listeners accept fewer connections. Returns the former soft
// limit, 0 if unknown.
rlim_t raiseDescriptorLimit() {
  constexpr rlim_t enoughDescriptors = 65'536;
  rlimit limit{};
  if (::getrlimit(RLIMIT_NOFILE, &limit) != 0) return 0;
  const rlim_t wanted = std::min(limit.rlim_max, enoughDescriptors);
  const rlim_t before = std::exchange(limit.rlim_cur, std::max(limit.rlim_cur, wanted));
  ::setrlimit(RLIMIT_NOFILE, &limit);
  return before;
}

// The same error with the whole path, for the person who has to repair the file.
ErrorPtr errorAt(const std::filesystem::path& file, const Error& error) {
  return makeError(error.domain(), error.code(), file.string() + ": " + error.debugDescription());
}

}  // namespace

Result<std::unique_ptr<LinuxPlatform>> LinuxPlatform::open(HandedSockets handed) {
  using Outcome = Result<std::unique_ptr<LinuxPlatform>>;
  const Result<std::filesystem::path> home = UserDirectories::homeDirectory();
  if (!home.ok()) return Outcome::failure(home.error());
  const Result<std::filesystem::path> runtime = UserDirectories::runtimeDirectory();
  if (!runtime.ok()) return Outcome::failure(runtime.error());
  const ExtensionLimits extensionLimits{.openFiles = raiseDescriptorLimit()};
  try {
    return Outcome::success(std::unique_ptr<LinuxPlatform>(
        new LinuxPlatform(home.value(), runtime.value(), extensionLimits, std::move(handed))));
  } catch (const std::system_error& failure) {
    return Outcome::failure(makePosixError(failure.code().value(), "start the platform layer"));
  }
}

LinuxPlatform::LinuxPlatform(const std::filesystem::path& homeDirectory,
                             const std::filesystem::path& runtimeDirectory,
                             const ExtensionLimits& extensionLimits, HandedSockets handed)
    : library(homeDirectory / "Library"),
      handedSockets(std::move(handed)),
      schedulerProvider(
          std::make_shared<ProductionSchedulerProvider>(runLoop.mainThreadScheduler())),
      dataProxy(
          std::make_shared<PosixDataProxy>([this] { return runLoop.holdTermination("write"); })),
      loggerProvider(std::make_shared<DonationLoggerProvider>(
          StructuredLog(std::make_shared<StandardErrorLogSink>(), &Date::now))),
      notificationCenter(std::make_shared<SocketNotificationCenter>(
          runLoop.eventLoop(), NotificationDirectory::below(runtimeDirectory))),
      entitlements(std::make_shared<EntitlementDatabase>(
          EntitlementDatabase::prefixOfRunningProgram(), EntitlementDatabase::systemConfiguration)),
      entitlementsWatch(entitlements->reloadOnChanges(runLoop.eventLoop())),
      entitlementsHangUp(runLoop.addSignalSource(SIGHUP, [this] { entitlements->reload(); })),
      extensionHost(std::make_shared<ExtensionHost>(
          ManifestDirectory::directoriesOf(EntitlementDatabase::prefixOfRunningProgram(),
                                           homeDirectory),
          ExtensionSchedulers{runLoop.eventLoop(), runLoop.mainThreadScheduler(),
                              schedulerProvider->newSerialSchedulerWithName("extensions")},
          extensionLimits)),
      phoneNumberMonitor(std::make_shared<PropertyListPhoneNumberMonitor>(
          homeDirectory / SIMCardsPath, dataProxy, runLoop.eventLoop())),
      deviceInfo(std::make_shared<PropertyListDeviceInfo>(homeDirectory / DevicePath,
                                                          ChassisFiles(), dataProxy)),
      userDefaults(std::make_shared<PropertyListUserDefaults>(preferencesPath(), dataProxy)),
      counterStore(
          std::make_shared<PrometheusCounterStore>(homeDirectory / CountersPath, dataProxy)),
      scope(makeServices()) {
  StandardStreams::detach();
}

LinuxPlatform::~LinuxPlatform() {
  entitlementsWatch->cancel();
  entitlementsHangUp->cancel();
}

void LinuxPlatform::finish() {
  // A reader that is there needs no time; without one, waiting longer would not help.
  constexpr std::chrono::seconds patience(1);
  extensionHost->shutDown();
  notificationCenter->finish();
  StandardStreams::drain(patience);
}

ErrorPtr LinuxPlatform::claimDonations() {
  // Other programs hold the lock for one small write at most.
  constexpr std::chrono::seconds patience(1);
  const std::filesystem::path directory = library.parent_path() / DonationFiles::directory;
  const std::filesystem::path lockPath = directory / DonationFiles::agentLock;
  PosixFileOperations operations;
  if (const int failure = DurableDirectory::ensure(operations, directory); failure != 0) {
    return errorAt(directory, *makePosixError(failure, "create the directory"));
  }
  auto locked = LockFile::lock(lockPath, patience);
  if (!locked.ok()) {
    const Error& error = *locked.error();
    if (error.code() != EWOULDBLOCK) return errorAt(lockPath, error);
    return makeServiceError(ServiceErrorCode::nameTaken,
                            "another agent keeps this user's donations");
  }
  donationsLock = std::move(locked).takeValue();
  // Temporary files of a crashed agent may contain donations that were removed since.
  DurableFileWriter::removeLeftovers(directory);
  return nullptr;
}

ErrorPtr LinuxPlatform::examineFiles() {
  constexpr std::chrono::seconds patience(2);
  constexpr std::chrono::milliseconds pause(20);
  const auto deadline = std::chrono::steady_clock::now() + patience;
  const auto waitAWhile = [&] {
    std::this_thread::sleep_for(pause);
    return std::chrono::steady_clock::now() < deadline;
  };
  const std::filesystem::path donations =
      library.parent_path() / DonationFiles::directory / DonationFiles::donations;
  for (const std::filesystem::path& file : {donations, feedbackPath(), preferencesPath()}) {
    if (const ErrorPtr error = whyUnreadable(file, *dataProxy, waitAWhile)) {
      return errorAt(file, *error);
    }
  }
  return nullptr;
}

void LinuxPlatform::watchMeCard() {
  std::call_once(meCardWatchStarted, [this] {
    meCardWatch =
        std::make_unique<MeCardFileWatch>(runLoop.eventLoop(), meCardPath(), notificationCenter);
  });
}

void LinuxPlatform::addListener(PlatformServices& services) {
  services.makeServiceListener = [this](const std::string& serviceName) {
    return std::make_shared<UnixServiceListener>(
        serviceName, entitlements, ServiceLimits::forThisProcess(),
        [this] { return beginTransaction("request"); }, std::exchange(handedSockets, {}));
  };
}

PlatformServices LinuxPlatform::makeServices() {
  PlatformServices services;
  services.now = &Date::now;
  services.defaultSchedulerProvider = [this] { return schedulerProvider; };
  services.globalAsynchronousScheduler = [this] {
    return schedulerProvider->backgroundScheduler();
  };
  services.defaultLoggerProvider = [this] { return loggerProvider; };
  services.defaultDistributedNotificationCenter = [this] { return notificationCenter; };
  // One for all callers, since it has the only writer thread.
  services.makeDataProxy = [this] { return dataProxy; };
  services.makeDonationPreferences = [this] {
    return std::make_shared<PropertyListDonationPreferences>(
        preferencesPath(), dataProxy, runLoop.eventLoop(), notificationCenter);
  };
  // One for all callers: a second store would wait for the first one's file lock, on the writer
  // thread that must finish the first one's write. Created on first use: it creates its directory
  // in order to watch it, which an agent that gives way to another must not do.
  services.makeDonationFeedbackStore = [this] {
    std::call_once(feedbackStoreMade, [this] {
      feedbackStore = std::make_shared<PropertyListFeedbackStore>(
          feedbackPath(), dataProxy, runLoop.eventLoop(),
          schedulerProvider->newSerialSchedulerWithName("feedback"));
    });
    return feedbackStore;
  };
  services.makeContactStore = [this] {
    // Before the first fetch, so that no change after it goes unnoticed.
    watchMeCard();
    return std::make_shared<VCardContactStore>(meCardPath());
  };
  addListener(services);
  addSources(services);
  addAnalytics(services);
  return services;
}

void LinuxPlatform::addSources(PlatformServices& services) {
  services.makeDonorLoader = [this](std::weak_ptr<CorvelProtocol> donationReceiver) {
    return extensionHost->makeLoader(std::move(donationReceiver));
  };
  services.currentExtensionsObservable = [this](std::weak_ptr<CorvelProtocol> donationReceiver) {
    return extensionHost->currentExtensionsObservable(std::move(donationReceiver));
  };
  services.makeAccountStore = [this] {
    return std::make_shared<PropertyListAccountStore>(library.parent_path() / AccountsPath,
                                                      dataProxy, accountFileProblems);
  };
  // One for all callers, so that a damaged file is reported once.
  services.makePhoneNumberMonitor = [this] { return phoneNumberMonitor; };
  services.deviceInfo = [this] { return deviceInfo; };
}

void LinuxPlatform::addAnalytics(PlatformServices& services) {
  services.userDefaults = [this] { return userDefaults; };
  services.counterStore = [this] { return counterStore; };
  services.makeSystemLog = [](const std::string& subsystem, const std::string& category) {
    return std::make_shared<SyslogSystemLog>(subsystem, category);
  };
  services.makeProcessTransaction = [this](const std::string& name) {
    return beginTransaction(name);
  };
}

std::shared_ptr<ProcessTransaction> LinuxPlatform::beginTransaction(const std::string& name) {
  return std::make_shared<ProcessTransaction>(runLoop.holdTermination(name));
}

}  // namespace quenlet
