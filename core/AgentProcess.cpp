#include "core/AgentProcess.h"

#include <csignal>

#include "core/ProductionEnvironment.h"
#include "mecard/ProductionInfoProvider.h"
#include "platform/PlatformServices.h"
#include "platform/donations/CorvelInterface.h"
#include "platform/logging/StandardOutput.h"

namespace quenlet {

AgentProcess::AgentProcess(RunLoop& mainRunLoop)
    : runLoop(mainRunLoop), loggerProvider(PlatformServices::current().defaultLoggerProvider()) {}

AgentProcess::~AgentProcess() = default;

ErrorPtr AgentProcess::start() {
  donationListener = PlatformServices::current().makeServiceListener(CorvelServiceName);
  if (ErrorPtr error = donationListener->claimName()) return error;
  loggerProvider->agentLogger()->agentWillStart();
  restoreAndMonitor();
  if (ErrorPtr error = openDonationService()) return error;
  installHangUpHandler();
  return nullptr;
}

void AgentProcess::restoreAndMonitor() {
  agent = std::make_shared<Corvel>(std::make_shared<ProductionEnvironment>(), nullptr,
                                   std::make_shared<ProductionInfoProvider>());
  // First of all blocks: every request waits behind it.
  agent->restorePersistedState();
  agent->start();
}

ErrorPtr AgentProcess::openDonationService() {
  listenerDelegate =
      std::make_shared<DonationListenerDelegate>(std::make_shared<ProductionEnvironment>(), agent);
  donationListener->setDelegate(listenerDelegate);
  return donationListener->resume();
}

void AgentProcess::installHangUpHandler() {
  hangUpSource = runLoop.addSignalSource(SIGHUP, [] { printLine("Hup hup hup!!"); });
}

void AgentProcess::run() {
  runLoop.run();
  loggerProvider->agentLogger()->agentWillStop();
  donationListener.reset();
}

}  // namespace quenlet
