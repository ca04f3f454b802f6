// Installed donor extensions: asked for all their values when donations come on again, and listed
// at launch and on the hang-up signal.

#include "core/Corvel.h"
#include "lifecycle/ExtensionDonationSolicitor.h"
#include "platform/PlatformServices.h"
#include "platform/logging/StandardOutput.h"
#include "sources/accounts/AccountPropertyParser.h"
#include "sources/accounts/AccountsDonationSolicitor.h"
#include "sources/sim/SIMCardDonationSolicitor.h"

namespace quenlet {
namespace {

constexpr double discoverySeconds = 10000.0;

}  // namespace

void Corvel::solicitDonations() {
  std::vector<std::shared_ptr<DonationSolicitor>> solicitors;
  logger->willDiscoverExtensions();
  // Everything is emitted before subscribe() returns, within this writer block: donations cannot be
  // disabled in between, and the subscription needs no cancelling.
  static_cast<void>(
      PlatformServices::current()
          .currentExtensionsObservable(weak_from_this())
          ->subscribe(Observer<DonorObjectPtr>::observerWithResultBlock(
              [this, &solicitors](const DonorObjectPtr& object) {
                if (auto extension = std::dynamic_pointer_cast<DonorExtension>(object)) {
                  solicitors.push_back(
                      std::make_shared<ExtensionDonationSolicitor>(std::move(extension)));
                } else {
                  logger->didDiscoverUnexpectedExtensionType(object->description());
                }
              },
              [this] { logger->didDiscoverExtensions(); },
              [this](const ErrorPtr& error) {
                // The next enable routine tries again.
                featureState = FeatureState::newlyEnabled;
                logger->didFailToDiscoverExtensions(error);
              })));
  const auto self = shared_from_this();
  solicitors.push_back(std::make_shared<AccountsDonationSolicitor>(self));
  solicitors.push_back(std::make_shared<SIMCardDonationSolicitor>(self));
  for (const auto& solicitor : solicitors) {
    solicitor->runWithReason(DonationSolicitor::donationsEnabledReason);
  }
}

void Corvel::loadExtensionVersions() {
  logger->willLoadExtensionVersions();
  const Future<ExtensionVersions> load = persistence->loadExtensionVersions();
  const Result<ExtensionVersions>& loaded = load.result();
  if (!loaded.ok()) return;
  MutexLock lock(versionsMutex);
  bundleIDVersions = loaded.value();
}

void Corvel::saveExtensionVersions() {
  logger->willSaveExtensionVersions();
  std::optional<ExtensionVersions> versions;
  {
    MutexLock lock(versionsMutex);
    versions = bundleIDVersions;
  }
  // No caller waits: a lost entry costs one more reload.
  if (versions) static_cast<void>(persistence->storeWithExtensionVersions(*versions));
}

bool Corvel::accountsNeedReload() {
  MutexLock lock(versionsMutex);
  if (!bundleIDVersions) return true;
  const auto entry = bundleIDVersions->find(AccountPropertyParser::bundleIdentifier);
  return entry == bundleIDVersions->end() || entry->second < AccountPropertyParser::parserVersion;
}

void Corvel::discoverAllExtensions() {
  if (featureState == FeatureState::disabled) return;
  bool versionsAreLoaded = false;
  {
    MutexLock lock(versionsMutex);
    versionsAreLoaded = bundleIDVersions.has_value();
  }
  if (!versionsAreLoaded) loadExtensionVersions();
  if (accountsNeedReload()) reloadAllAccounts();
  printLine("Discovering all extensions");
  const auto subscription = PlatformServices::current()
                                .currentExtensionsObservable(weak_from_this())
                                ->subscribe(Observer<DonorObjectPtr>::observerWithResultBlock(
                                    [](const DonorObjectPtr& object) {
                                      printLine("Discovered extensions: " + object->description());
                                    },
                                    [] { printLine("Discovery completed"); },
                                    [](const ErrorPtr& error) {
                                      printLine("Discovery failed: " + error->description());
                                    }));
  static_cast<void>(
      schedulerProvider->mainThreadScheduler()->afterDelay(discoverySeconds, [subscription] {
        printLine("Ending discovery");
        subscription->cancel();
      }));
}

}  // namespace quenlet
