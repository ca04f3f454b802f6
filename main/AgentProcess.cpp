#include "main/AgentProcess.h"

#include <csignal>

#include "analytics/MetricsAttempt.h"
#include "core/BundleLimitDecorator.h"
#include "core/ProductionEnvironment.h"
#include "mecard/ProductionInfoProvider.h"
#include "platform/PlatformServices.h"
#include "platform/foundation/FreedMemory.h"
#include "platform/foundation/StandardStreams.h"
#include "protocol/CorvelInterface.h"

namespace quenlet {
namespace {

constexpr double discoveryDelaySeconds = 2.0;
constexpr double simCardDelaySeconds = 5.0;
constexpr double metricsDelaySeconds = 5.0;
// Later than the other steps of a launch, which free most of what they allocate.
constexpr double restDelaySeconds = 6.0;

// The steps of a launch are never cancelled.
void performLater(double delaySeconds, Block block) {
  static_cast<void>(PlatformServices::current().globalAsynchronousScheduler()->afterDelay(
      delaySeconds, std::move(block)));
}

}  // namespace

AgentProcess::AgentProcess(RunLoop& mainRunLoop)
    : runLoop(mainRunLoop), loggerProvider(PlatformServices::current().defaultLoggerProvider()) {}

AgentProcess::~AgentProcess() = default;

ErrorPtr AgentProcess::claimName() {
  donationListener = PlatformServices::current().makeServiceListener(CorvelServiceName);
  return donationListener->claimName();
}

ErrorPtr AgentProcess::start() {
  loggerProvider->agentLogger()->agentWillStart();
  restoreAndMonitor();
  if (ErrorPtr error = openDonationService()) return error;
  scheduleDiscovery();
  scheduleSIMCardMonitor();
  installSignalHandlers();
  scheduleMetricsAttempt();
  performLater(restDelaySeconds, &returnFreedMemory);
  return nullptr;
}

void AgentProcess::restoreAndMonitor() {
  agent = std::make_shared<Corvel>(std::make_shared<ProductionEnvironment>(), nullptr,
                                   std::make_shared<ProductionInfoProvider>());
  // The first block of all: every request waits behind it.
  agent->restorePersistedState();
  agent->start();
}

ErrorPtr AgentProcess::openDonationService() {
  listenerDelegate = std::make_shared<DonationListenerDelegate>(
      std::make_shared<ProductionEnvironment>(), agent, [agent = agent](BundleLimit limit) {
        return std::make_shared<BundleLimitDecorator>(agent, std::move(limit));
      });
  donationListener->setDelegate(listenerDelegate);
  // A client whose request made the service manager start this agent waits for the card. Accept it
  // once the donations are loaded and the preference is known, rather than refuse the request.
  if (donationListener->mayHaveClients()) agent->lock()->performSynchronousReaderBlock([] {});
  return donationListener->resume();
}

void AgentProcess::scheduleDiscovery() {
  performLater(discoveryDelaySeconds, [agent = agent] { agent->discoverAllExtensions(); });
}

void AgentProcess::scheduleSIMCardMonitor() {
  if (!SIMCardMonitor::shouldMonitor()) return;
  simCardMonitor =
      std::make_shared<SIMCardMonitor>(agent, PlatformServices::current().makePhoneNumberMonitor());
  performLater(simCardDelaySeconds, [monitor = simCardMonitor] { monitor->start(); });
}

void AgentProcess::installSignalHandlers() {
  signalSources.push_back(runLoop.addSignalSource(SIGHUP, [agent = agent] {
    StandardStreams::writeOutput("Hup hup hup!!");
    agent->discoverAllExtensions();
  }));
  // The run loop ends after the work under way, to which no new request may add.
  for (const int signal : {SIGTERM, SIGINT}) {
    signalSources.push_back(
        runLoop.addSignalSource(signal, [weakListener = std::weak_ptr(donationListener)] {
          if (const auto listener = weakListener.lock()) listener->suspend();
        }));
  }
}

void AgentProcess::scheduleMetricsAttempt() {
  performLater(metricsDelaySeconds, [agent = agent] { MetricsAttempt::runMetricsAttempt(agent); });
}

void AgentProcess::run() {
  runLoop.run();
  loggerProvider->agentLogger()->agentWillStop();
  donationListener.reset();
}

}  // namespace quenlet
