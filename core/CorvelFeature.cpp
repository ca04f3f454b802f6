// The agent's reactions to the donations-enabled preference and to changes of the curated card.

#include "core/Corvel.h"

namespace quenlet {

void Corvel::start() {
  startMonitoringPreferences();
  curatedInfoProvider->startMonitoring(environment, [weakSelf = weak_from_this()] {
    const auto self = weakSelf.lock();
    if (!self) return;
    self->submitWriterBlock([](Corvel& agent) {
      agent.rebuildMeCard();
      agent.postValuesDidChange();
    });
  });
}

void Corvel::startMonitoringPreferences() {
  preferencesMonitor->setOnSuppress([self = shared_from_this()](bool suppress) {
    self->submitWriterBlock([suppress](Corvel& agent) {
      agent.applySuppression(suppress);
      agent.postValuesDidChange();
    });
  });
  preferencesMonitor->setOnEnable([self = shared_from_this()](bool enable) {
    self->submitWriterBlock([enable](Corvel& agent) {
      if (enable) {
        agent.runEnableRoutine();
      } else {
        agent.disableDonations();
      }
    });
  });
  preferencesMonitor->startMonitoring();
}

void Corvel::stop() {
  preferencesMonitor->stopMonitoring();
  // The callbacks hold the agent, which holds the monitor.
  preferencesMonitor->setOnSuppress(nullptr);
  preferencesMonitor->setOnEnable(nullptr);
}

bool Corvel::featureEnabled() const {
  const FeatureState state = featureState;
  return state == FeatureState::newlyEnabled || state == FeatureState::enabled;
}

void Corvel::setFeatureEnabled(bool enabled) { applySuppression(!enabled); }

void Corvel::applySuppression(bool suppress) {
  if (suppress) {
    logger->featureWillDisable();
    featureState = FeatureState::disabled;
    return;
  }
  logger->featureWillEnable();
  // Sources are asked only when donations come on again, not at launch.
  if (featureState == FeatureState::disabled) {
    featureState = FeatureState::newlyEnabled;
    runEnableRoutine();
  } else {
    featureState = FeatureState::enabled;
  }
}

void Corvel::reenableDonations() { runEnableRoutine(); }

void Corvel::runEnableRoutine() {
  if (featureState == FeatureState::newlyEnabled) {
    featureState = FeatureState::enabled;
    solicitDonations();
  }
  logger->featureDidEnable();
}

void Corvel::disableDonations() {
  submitWriterBlock([](Corvel& agent) { agent.deleteAllDonations(); });
}

void Corvel::deleteAllDonations() {
  donations = DonationTable();
  rebuildMeCard();
  // A failed save can be told to nobody; the next change writes the table again.
  save([](const SaveResponse&) {});
  logger->featureDidDisable();
}

}  // namespace quenlet
