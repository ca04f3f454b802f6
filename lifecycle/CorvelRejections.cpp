// Rejections: the owner refuses one value or a cluster of values. The values leave the store at
// once; the feedback store keeps them away afterwards. It is told after the save of the removal,
// even if that failed, as the values are gone from memory in either case.

#include "core/Corvel.h"
#include "platform/contacts/ContactStore.h"
#include "platform/foundation/Text.h"

namespace quenlet {
namespace {

using IdentifierEvent = void (AgentLogger::*)(const std::string&);

}  // namespace

// The log events of a rejection, of one donation or of a cluster.
struct Corvel::RejectionEvents final {
  IdentifierEvent didReject;
  IdentifierEvent couldNotRejectUnknown;
  void (AgentLogger::*couldNotReject)(const std::string&, const ErrorPtr&);

  static const RejectionEvents ofDonation;
  static const RejectionEvents ofCluster;
};

const Corvel::RejectionEvents Corvel::RejectionEvents::ofDonation = {
    &AgentLogger::didRejectDonationIdentifier,
    &AgentLogger::couldNotRejectUnknownDonationIdentifier,
    &AgentLogger::couldNotRejectDonationIdentifier};

const Corvel::RejectionEvents Corvel::RejectionEvents::ofCluster = {
    &AgentLogger::didRejectClusterIdentifier, &AgentLogger::couldNotRejectUnknownClusterIdentifier,
    &AgentLogger::couldNotRejectClusterIdentifier};

void Corvel::rejectValueWithDonationIdentifier(std::string donationIdentifier,
                                               ErrorReply completionHandler) {
  logger->willRejectDonationIdentifier(donationIdentifier);
  Rejection rejection{RejectionEvents::ofDonation, std::move(donationIdentifier),
                      std::move(completionHandler)};
  submitWriterBlock([rejection = std::move(rejection)](Corvel& agent) {
    const DonationValuePtr found = agent.donations.find(rejection.identifier);
    // The unknown identifier is logged at once, in order with the changes before it.
    if (!found) {
      agent.logger->couldNotRejectUnknownDonationIdentifier(rejection.identifier);
      agent.replyScheduler->performBlock([self = agent.shared_from_this(), rejection] {
        self->logger->didRejectDonationIdentifier(rejection.identifier);
        rejection.reply(nullptr);
      });
      return;
    }
    // An image equals nothing, not even itself, and so matches no row.
    const Value unwanted = found->value();
    agent.rejectValues(agent.valuesWhere([&unwanted](const DonationValue& row) {
      return row.value() == unwanted;
    }),
                       rejection);
  });
}

void Corvel::rejectValuesWithClusterIdentifier(std::string clusterIdentifier,
                                               ErrorReply completionHandler) {
  logger->willRejectClusterIdentifier(clusterIdentifier);
  Rejection rejection{RejectionEvents::ofCluster, std::move(clusterIdentifier),
                      std::move(completionHandler)};
  if (rejection.identifier.empty()) {
    reportRejection({RejectionResult::unknownIdentifier}, rejection);
    return;
  }
  submitWriterBlock([rejection = std::move(rejection)](Corvel& agent) {
    const std::string key = canonicalKey(rejection.identifier);
    agent.rejectValues(agent.valuesWhere([&key](const DonationValue& row) {
      return row.clusterKey().text == key;
    }),
                       rejection);
  });
}

void Corvel::removeAllRejectionsWithCompletionHandler(ErrorReply completionHandler) {
  logger->willRemoveAllRejections();
  replyScheduler->performBlock([self = shared_from_this(), reply = std::move(completionHandler)] {
    self->logger->didRemoveAllRejections();
    reply(nullptr);
  });
}

DonationValues Corvel::valuesWhere(
    const std::function<bool(const DonationValue&)>& selected) const {
  DonationValues values;
  for (const DonationValuePtr& row : *donations.snapshot()) {
    if (selected(*row)) values.push_back(row);
  }
  return values;
}

void Corvel::rejectValues(DonationValues values, const Rejection& rejection) {
  if (values.empty()) {
    reportRejection({RejectionResult::unknownIdentifier}, rejection);
    return;
  }
  RemoveValuesWithIdentifiers removal;
  for (const DonationValuePtr& value : values) {
    removal.identifiers.push_back(value->origin().donationIdentifier);
  }
  applyChange(removal, [self = shared_from_this(), values = std::move(values),
                        rejection](const SaveResponse&) {
    self->feedbackStore->rejectDonatedValues(
        values, MeCardContactIdentifier, [self, rejection](const ErrorPtr& error) {
          self->reportRejection(
              {error ? RejectionResult::failure : RejectionResult::success, error}, rejection);
        });
  });
}

void Corvel::reportRejection(const RejectionResult& result, const Rejection& rejection) {
  replyScheduler->performBlock([self = shared_from_this(), result, rejection] {
    AgentLogger& log = *self->logger;
    const RejectionEvents& events = rejection.events;
    if (result.outcome == RejectionResult::failure) {
      (log.*events.couldNotReject)(rejection.identifier, result.error);
    } else {
      if (result.outcome == RejectionResult::unknownIdentifier) {
        (log.*events.couldNotRejectUnknown)(rejection.identifier);
      }
      (log.*events.didReject)(rejection.identifier);
    }
    rejection.reply(result.error);
  });
}

}  // namespace quenlet
