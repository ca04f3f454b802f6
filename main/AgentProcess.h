#pragma once

#include <memory>
#include <vector>

#include "core/Corvel.h"
#include "core/DonationListenerDelegate.h"
#include "platform/ipc/ServiceListener.h"
#include "platform/logging/DonationLoggerProvider.h"
#include "platform/scheduling/RunLoop.h"
#include "sources/sim/SIMCardMonitor.h"

namespace quenlet {

// The agent's life from launch to the end of its run loop. Use on the main thread.
class AgentProcess final {
 public:
  // `mainRunLoop` is the platform's. Nothing runs yet.
  explicit AgentProcess(RunLoop& mainRunLoop);
  ~AgentProcess();

  // Claims the service's name. An error when another agent serves it.
  [[nodiscard]] ErrorPtr claimName();
  // Call it once the name is claimed. Starts all parts in order: restores the stored donations,
  // follows the preference and the curated card, opens the service; then schedules what can wait:
  // the list of installed donors, the SIM cards, the daily report. An error when the service cannot
  // be opened.
  [[nodiscard]] ErrorPtr start();
  // Serves until the run loop ends, then closes the service. At a terminating signal the agent
  // takes no further requests, but finishes those under way.
  void run();

 private:
  void restoreAndMonitor();
  [[nodiscard]] ErrorPtr openDonationService();
  void scheduleDiscovery();
  void scheduleSIMCardMonitor();
  void installSignalHandlers();
  void scheduleMetricsAttempt();

  RunLoop& runLoop;
  const std::shared_ptr<DonationLoggerProvider> loggerProvider;
  std::shared_ptr<Corvel> agent;
  std::shared_ptr<DonationListenerDelegate> listenerDelegate;
  std::shared_ptr<ServiceListener> donationListener;
  std::shared_ptr<SIMCardMonitor> simCardMonitor;
  std::vector<std::shared_ptr<Cancelable>> signalSources;
};

}  // namespace quenlet
