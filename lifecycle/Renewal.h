#pragma once

#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "platform/AgentEnvironmentProtocol.h"
#include "platform/extensions/DonorExtension.h"
#include "protocol/CorvelProtocol.h"
#include "storage/DonationStore.h"

namespace quenlet {

// Before a value expires, its donor is asked until when it holds. Nothing is kept between two runs;
// a donor's answer is an ordinary change of the store, whenever it comes.
//
// Thread-safe. A run keeps the object alive until all donors have answered.
class Renewal final : public std::enable_shared_from_this<Renewal> {
 public:
  Renewal(std::shared_ptr<AgentLogger> agentLogger, std::shared_ptr<DonationStore> donationStore)
      : logger(std::move(agentLogger)), store(std::move(donationStore)) {}

  // Two seconds later, asks the donors of these values until when they hold, and applies the
  // answers. Skips values of the agent's own sources. `agent` takes what extensions donate
  // meanwhile.
  void renewWithDonations(const DonationValues& values, std::weak_ptr<CorvelProtocol> agent);
  // The same for those of the values that have expired already.
  void renewPreExpired(const DonationValues& values, std::weak_ptr<CorvelProtocol> agent);
  // Asks the donor of one bundle to renew a placeholder, and prints the answer. Stores nothing.
  static void discoverExtensionWithIdentifier(const std::string& bundleIdentifier,
                                              std::weak_ptr<CorvelProtocol> agent);

 private:
  void askDonorsToRenew(const DonationValues& values, std::weak_ptr<CorvelProtocol> agent);
  void askDonorToRenew(const DonationValues& values, const Result<DonorObjectPtr>& donor);
  void renewalAcknowledged(const DonationValuePtr& value, std::optional<Date> newExpirationDate,
                           const ErrorPtr& donorError);

  const std::shared_ptr<AgentLogger> logger;
  const std::shared_ptr<DonationStore> store;
};

}  // namespace quenlet
