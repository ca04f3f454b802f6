#pragma once

#include <functional>
#include <memory>
#include <utility>
#include <vector>

#include "platform/logging/AgentLogger.h"
#include "platform/scheduling/Scheduler.h"
#include "protocol/CorvelProtocol.h"
#include "sources/DonationSolicitor.h"

namespace quenlet {

// Finds the installed donor extensions: to ask them for all their values when donations come on
// again, and to list them at launch and on the hang-up signal. Immutable; any thread.
class Discovery final {
 public:
  using Solicitors = std::vector<std::shared_ptr<DonationSolicitor>>;

  explicit Discovery(std::shared_ptr<AgentLogger> agentLogger) : logger(std::move(agentLogger)) {}

  // Asks all sources to donate: the extensions in the order in which they are found, then `others`.
  // Calls `failed`, before the event, when the extensions cannot be listed; those found and the
  // others are asked all the same. All of it happens before the call returns.
  void solicitDonations(std::weak_ptr<CorvelProtocol> agent, const Solicitors& others,
                        const std::function<void()>& failed) const;
  // Prints the installed donors, and those that come within 10,000 s.
  static void printExtensions(std::weak_ptr<CorvelProtocol> agent, Scheduler& mainThreadScheduler);

 private:
  const std::shared_ptr<AgentLogger> logger;
};

}  // namespace quenlet
