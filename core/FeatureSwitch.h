#pragma once

#include <atomic>
#include <functional>
#include <memory>
#include <string>
#include <utility>

#include "platform/logging/AgentLogger.h"
#include "quenlet/Error.h"

namespace quenlet {

// Whether the agent serves requests, following the donations-enabled preference.
//
//   state        | preference off | preference on                  | discovery fails
//   undetermined | disabled       | enabled                        | –
//   disabled     | disabled       | newlyEnabled, then enabled     | –
//   newlyEnabled | disabled       | enabled                        | –
//   enabled      | disabled       | enabled                        | newlyEnabled
enum class FeatureState : unsigned char { undetermined, disabled, newlyEnabled, enabled };

// Decides whether requests are served, by the donations-enabled preference.
class FeatureSwitch final {
 public:
  // Whether a request is served before the preference has been read.
  enum class WhileUndetermined { served, refused };

  // `solicitSources` asks all sources for their values, in a writer block.
  FeatureSwitch(std::shared_ptr<AgentLogger> agentLogger, std::function<void()> solicitSources)
      : logger(std::move(agentLogger)), solicit(std::move(solicitSources)) {}

  // Any thread.

  [[nodiscard]] bool isDisabled() const { return state == FeatureState::disabled; }
  [[nodiscard]] bool isEnabled() const;
  // The error for a request that the state refuses, logged; null when it may pass.
  [[nodiscard]] ErrorPtr refusal(const std::string& requestName,
                                 WhileUndetermined undetermined) const;

  // In writer blocks of the state scheduler only.

  // Follows the preference: off or on. Coming on after it was off runs the enable routine.
  void applySuppression(bool suppress);
  // Asks the sources if they have not been asked since donations came on.
  void runEnableRoutine();
  // The next enable routine asks the sources again.
  void solicitAgain() { state = FeatureState::newlyEnabled; }

 private:
  const std::shared_ptr<AgentLogger> logger;
  const std::function<void()> solicit;
  std::atomic<FeatureState> state = FeatureState::undetermined;
};

}  // namespace quenlet
