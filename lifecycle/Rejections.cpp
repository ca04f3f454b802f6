#include "lifecycle/Rejections.h"

#include "platform/contacts/ContactStore.h"

namespace quenlet {

// The log events of a rejection, of one donation or of a cluster.
struct Rejections::Events final {
  using IdentifierEvent = void (AgentLogger::*)(const std::string&);

  IdentifierEvent didReject;
  IdentifierEvent couldNotRejectUnknown;
  void (AgentLogger::*couldNotReject)(const std::string&, const ErrorPtr&);

  static const Events ofDonation;
  static const Events ofCluster;
};

const Rejections::Events Rejections::Events::ofDonation = {
    &AgentLogger::didRejectDonationIdentifier,
    &AgentLogger::couldNotRejectUnknownDonationIdentifier,
    &AgentLogger::couldNotRejectDonationIdentifier};

const Rejections::Events Rejections::Events::ofCluster = {
    &AgentLogger::didRejectClusterIdentifier, &AgentLogger::couldNotRejectUnknownClusterIdentifier,
    &AgentLogger::couldNotRejectClusterIdentifier};

Rejections::Rejections(AgentEnvironmentProtocol& environment,
                       std::shared_ptr<DonationStore> donationStore)
    : store(std::move(donationStore)),
      feedbackStore(environment.feedbackStore()),
      logger(environment.logger()),
      replyScheduler(environment.schedulerProvider()->backgroundScheduler()) {}

void Rejections::rejectValueWithDonationIdentifier(std::string donationIdentifier,
                                                   ErrorReply completionHandler) {
  logger->willRejectDonationIdentifier(donationIdentifier);
  Rejection rejection{Events::ofDonation, std::move(donationIdentifier),
                      std::move(completionHandler)};
  store->submitWriterBlock(
      [self = shared_from_this(), rejection = std::move(rejection)](DonationStore& donations) {
        self->rejectFound(donations, rejection);
      });
}

void Rejections::rejectFound(DonationStore& donations, const Rejection& rejection) {
  const DonationValuePtr found = donations.find(rejection.identifier);
  // The unknown identifier is logged at once, in order with the changes before it.
  if (!found) {
    logger->couldNotRejectUnknownDonationIdentifier(rejection.identifier);
    replyScheduler->performBlock([self = shared_from_this(), rejection] {
      self->logger->didRejectDonationIdentifier(rejection.identifier);
      rejection.reply(nullptr);
    });
    return;
  }
  const auto isUnwanted = [&found, unwanted = found->value()](const DonationValue& row) {
    // Equal values have equal keys, so few need decoding; but the key of a long postal address,
    // made of all its fields, can depend on their composition.
    const bool mayBeEqual =
        row.kind() == found->kind() &&
        (row.kind() == DonationKind::postalAddress || row.contentKey() == found->contentKey());
    return mayBeEqual && row.value() == unwanted;
  };
  rejectValues(donations, valuesWhere(*donations.list(), isUnwanted), rejection);
}

void Rejections::rejectValuesWithClusterIdentifier(std::string clusterIdentifier,
                                                   ErrorReply completionHandler) {
  logger->willRejectClusterIdentifier(clusterIdentifier);
  Rejection rejection{Events::ofCluster, std::move(clusterIdentifier),
                      std::move(completionHandler)};
  if (rejection.identifier.empty()) {
    report({RejectionResult::unknownIdentifier}, rejection);
    return;
  }
  store->submitWriterBlock(
      [self = shared_from_this(), rejection = std::move(rejection)](DonationStore& donations) {
        const Fingerprint key = DonationKeys::ofText(rejection.identifier);
        self->rejectValues(
            donations,
            valuesWhere(*donations.list(),
                        [&key](const DonationValue& row) { return row.clusterKey() == key; }),
            rejection);
      });
}

void Rejections::removeAllRejections(ErrorReply completionHandler) {
  logger->willRemoveAllRejections();
  replyScheduler->performBlock([self = shared_from_this(), reply = std::move(completionHandler)] {
    self->logger->didRemoveAllRejections();
    reply(nullptr);
  });
}

void Rejections::rejectValues(DonationStore& donations, const DonationValues& values,
                              const Rejection& rejection) {
  if (values.empty()) {
    report({RejectionResult::unknownIdentifier}, rejection);
    return;
  }
  donations.removeAll(values, [self = shared_from_this(), values, rejection](const SaveResponse&) {
    self->feedbackStore->rejectDonatedValues(
        values, MeCardContactIdentifier, [self, rejection](const ErrorPtr& error) {
          self->report({error ? RejectionResult::failure : RejectionResult::success, error},
                       rejection);
        });
  });
}

void Rejections::report(const RejectionResult& result, const Rejection& rejection) {
  replyScheduler->performBlock([self = shared_from_this(), result, rejection] {
    AgentLogger& log = *self->logger;
    const Events& events = rejection.events;
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
