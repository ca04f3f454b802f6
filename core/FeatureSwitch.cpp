#include "core/FeatureSwitch.h"

#include "model/DonationError.h"

namespace quenlet {

bool FeatureSwitch::isEnabled() const {
  const FeatureState current = state;
  return current == FeatureState::newlyEnabled || current == FeatureState::enabled;
}

ErrorPtr FeatureSwitch::refusal(const std::string& requestName,
                                WhileUndetermined undetermined) const {
  const FeatureState current = state;
  // Until the preference is known, it may be off: reads are refused, changes are taken.
  const bool refused =
      current == FeatureState::disabled ||
      (current == FeatureState::undetermined && undetermined == WhileUndetermined::refused);
  if (!refused) return nullptr;
  logger->featureNotEnabled(requestName);
  return makeDonationError(DonationErrorCode::featureNotEnabled,
                           current == FeatureState::undetermined
                               ? "the agent has just started and does not know yet whether "
                                 "donations are enabled"
                               : "donations are not enabled");
}

void FeatureSwitch::applySuppression(bool suppress) {
  if (suppress) {
    logger->featureWillDisable();
    state = FeatureState::disabled;
    return;
  }
  logger->featureWillEnable();
  // Sources are asked only when donations come on again, not at launch.
  if (state == FeatureState::disabled) {
    state = FeatureState::newlyEnabled;
    runEnableRoutine();
  } else {
    state = FeatureState::enabled;
  }
}

void FeatureSwitch::runEnableRoutine() {
  if (state == FeatureState::newlyEnabled) {
    state = FeatureState::enabled;
    solicit();
  }
  logger->featureDidEnable();
}

}  // namespace quenlet
