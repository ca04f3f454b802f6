#pragma once

#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "platform/AgentEnvironmentProtocol.h"
#include "protocol/CorvelProtocol.h"
#include "storage/DonationStore.h"

namespace quenlet {

// The owner refuses one value or a cluster of values. The values leave the store at once; the
// feedback store keeps them away afterwards. It is told after the save of the removal, even if that
// failed, as the values are gone from memory in either case.
//
// Thread-safe. Replies come on the background scheduler. An operation keeps the object alive until
// it has replied.
class Rejections final : public std::enable_shared_from_this<Rejections> {
 public:
  // The outcome of a rejection: the feedback store failed with `error`, values were dropped and
  // reported, or nothing matched.
  struct RejectionResult final {
    enum Case { failure, success, unknownIdentifier };
    Case outcome;
    ErrorPtr error = nullptr;
  };

  Rejections(AgentEnvironmentProtocol& environment, std::shared_ptr<DonationStore> donationStore);

  // Rejects every value with the content and label of this one. An image equals nothing, not even
  // itself, and so is not rejected.
  void rejectValueWithDonationIdentifier(std::string donationIdentifier,
                                         ErrorReply completionHandler);
  void rejectValuesWithClusterIdentifier(std::string clusterIdentifier,
                                         ErrorReply completionHandler);
  // Changes nothing: rejections are the owner's own file.
  void removeAllRejections(ErrorReply completionHandler);

 private:
  struct Events;
  // A client's request, with its reply.
  struct Rejection final {
    const Events& events;
    std::string identifier;
    ErrorReply reply;
  };

  // In a writer block.
  void rejectFound(DonationStore& donations, const Rejection& rejection);
  void rejectValues(DonationStore& donations, const DonationValues& values,
                    const Rejection& rejection);
  void report(const RejectionResult& result, const Rejection& rejection);

  const std::shared_ptr<DonationStore> store;
  const std::shared_ptr<DonationFeedbackStore> feedbackStore;
  const std::shared_ptr<AgentLogger> logger;
  const std::shared_ptr<Scheduler> replyScheduler;
};

}  // namespace quenlet
