#include "lifecycle/Discovery.h"

#include <memory>
#include <utility>

#include "platform/PlatformServices.h"
#include "platform/extensions/DonorExtension.h"
#include "platform/foundation/StandardStreams.h"
#include "sources/DonationSolicitor.h"

namespace quenlet {
namespace {

// Asks one donor extension to donate all of its values again. Thread-safe.
class ExtensionDonationSolicitor final : public DonationSolicitor {
 public:
  explicit ExtensionDonationSolicitor(std::shared_ptr<DonorExtension> extension)
      : donor(std::move(extension)) {}

  void runWithReason(std::uint64_t reason) override { donor->redonateAllValuesWithReason(reason); }

 private:
  const std::shared_ptr<DonorExtension> donor;
};

constexpr double discoverySeconds = 10000.0;

}  // namespace

void Discovery::solicitDonations(std::weak_ptr<CorvelProtocol> agent, const Solicitors& others,
                                 const std::function<void()>& failed) const {
  Solicitors solicitors;
  logger->willDiscoverExtensions();
  // Everything is emitted before subscribe() returns: donations cannot be disabled in between, and
  // the subscription needs no cancelling.
  static_cast<void>(
      PlatformServices::current()
          .currentExtensionsObservable(std::move(agent))
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
              [this, &failed](const ErrorPtr& error) {
                failed();
                logger->didFailToDiscoverExtensions(error);
              })));
  solicitors.insert(solicitors.end(), others.begin(), others.end());
  for (const auto& solicitor : solicitors) {
    solicitor->runWithReason(DonationSolicitor::donationsEnabledReason);
  }
}

void Discovery::printExtensions(std::weak_ptr<CorvelProtocol> agent,
                                Scheduler& mainThreadScheduler) {
  StandardStreams::writeOutput("Discovering all extensions");
  const auto subscription =
      PlatformServices::current()
          .currentExtensionsObservable(std::move(agent))
          ->subscribe(Observer<DonorObjectPtr>::observerWithResultBlock(
              [](const DonorObjectPtr& object) {
                StandardStreams::writeOutput("Discovered extensions: " + object->description());
              },
              [] { StandardStreams::writeOutput("Discovery completed"); },
              [](const ErrorPtr& error) {
                StandardStreams::writeOutput("Discovery failed: " + error->description());
              }));
  static_cast<void>(mainThreadScheduler.afterDelay(discoverySeconds, [subscription] {
    StandardStreams::writeOutput("Ending discovery");
    subscription->cancel();
  }));
}

}  // namespace quenlet
