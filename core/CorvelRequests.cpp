// The clients' operations. Each is bracketed in the log by agentWillHandleRequest: and
// agentDidHandleRequest:; a refused change or list has no second event.

#include "core/Corvel.h"
#include "model/DonationError.h"
#include "platform/PlatformServices.h"

namespace quenlet {

ErrorPtr Corvel::refusal(const std::string& requestName, WhileUndetermined undetermined) const {
  const FeatureState state = featureState;
  // Until the preference is known, it may be off: reads are refused, changes are taken.
  const bool refused =
      state == FeatureState::disabled ||
      (state == FeatureState::undetermined && undetermined == WhileUndetermined::refused);
  if (!refused) return nullptr;
  logger->featureNotEnabled(requestName);
  return makeDonationError(DonationErrorCode::featureNotEnabled,
                           state == FeatureState::undetermined
                               ? "the agent has just started and does not know yet whether "
                                 "donations are enabled"
                               : "donations are not enabled");
}

void Corvel::donateMeCardValues(DonationValues values, ErrorReply completionHandler) {
  donateMeCardValuesWithin(nullptr, std::move(values), std::move(completionHandler));
}

void Corvel::donateMeCardValuesWithin(std::shared_ptr<const BundleLimit> limit,
                                      DonationValues values, ErrorReply completionHandler) {
  const std::string requestName = "donateMeCardValues:completionHandler:";
  logger->agentWillHandleRequest(requestName);
  if (const ErrorPtr error = refusal(requestName, WhileUndetermined::served)) {
    completionHandler(error);
    return;
  }
  logger->acceptingDonations(values);
  ChangeLimit within{std::move(limit), [self = shared_from_this(), requestName,
                                        completionHandler](const ErrorPtr& error) {
                       completionHandler(error);
                       self->logger->agentDidHandleRequest(requestName);
                     }};
  SaveReply saveReply = [self = shared_from_this(), values, requestName,
                         reply = std::move(completionHandler)](const SaveResponse& response) {
    reply(response.error());
    // All values are offered, not only those near their end.
    if (response.isSuccess()) self->renewWithDonations(values);
    self->logger->agentDidHandleRequest(requestName);
    self->renewPreExpired(values);
  };
  submitChange(InsertOrModifyValues{std::move(values)}, std::move(saveReply), std::move(within));
}

void Corvel::renewPreExpired(const DonationValues& values) {
  const Date now = PlatformServices::current().now();
  DonationValues expired;
  for (const DonationValuePtr& value : values) {
    if (value->expirationDate() < now) expired.push_back(value);
  }
  if (expired.empty()) return;
  logger->preExpiredDonations(expired);
  renewWithDonations(expired);
}

void Corvel::removeDonatedMeCardValuesForIdentifiers(std::vector<std::string> identifiers,
                                                     SuccessReply completionHandler) {
  removeValues("removeDonatedMeCardValuesForIdentifiers:completionHandler:",
               RemoveValuesWithIdentifiers{std::move(identifiers)}, std::move(completionHandler));
}

void Corvel::removeDonatedMeCardValuesWithin(std::shared_ptr<const BundleLimit> limit,
                                             std::vector<std::string> identifiers,
                                             SuccessReply completionHandler) {
  removeValues("removeDonatedMeCardValuesForIdentifiers:completionHandler:",
               RemoveValuesWithIdentifiers{std::move(identifiers)}, std::move(completionHandler),
               std::move(limit));
}

void Corvel::removeDonatedMeCardValuesWithBundleIdentifier(std::string bundleIdentifier,
                                                           SuccessReply completionHandler) {
  removeValues("removeDonatedMeCardValuesWithBundleIdentifier:completionHandler:",
               RemoveValuesWithBundleIdentifier{std::move(bundleIdentifier)},
               std::move(completionHandler));
}

void Corvel::removeValues(const std::string& requestName, ChangeType change, SuccessReply reply,
                          std::shared_ptr<const BundleLimit> limit) {
  logger->agentWillHandleRequest(requestName);
  if (const ErrorPtr error = refusal(requestName, WhileUndetermined::served)) {
    reply(false, error);
    return;
  }
  const auto finish = [self = shared_from_this(), requestName, reply = std::move(reply)](
                          bool success, const ErrorPtr& error) {
    reply(success, error);
    self->logger->agentDidHandleRequest(requestName);
  };
  submitChange(
      std::move(change),
      [finish](const SaveResponse& response) { finish(response.isSuccess(), response.error()); },
      {std::move(limit), [finish](const ErrorPtr& error) { finish(false, error); }});
}

void Corvel::fetchDonatedMeCard(ContactReply reply) {
  getDonatedMeCardWithSel("fetchDonatedMeCard:", replyScheduler,
                          [reply = std::move(reply)](const Result<ContactPtr>& result) {
                            if (result.ok()) {
                              reply(result.value(), nullptr);
                            } else {
                              reply(nullptr, result.error());
                            }
                          });
}

void Corvel::synchronousDonatedMeCard(EitherContactReply reply) {
  getDonatedMeCardWithSel("synchronousDonatedMeCard:", schedulerProvider->immediateScheduler(),
                          reply);
}

void Corvel::getDonatedMeCardWithSel(const std::string& sel,
                                     const std::shared_ptr<Scheduler>& refusalScheduler,
                                     const EitherContactReply& reply) {
  logger->agentWillHandleRequest(sel);
  if (const ErrorPtr error = refusal(sel, WhileUndetermined::refused)) {
    refusalScheduler->performBlock([reply, error] { reply(Result<ContactPtr>::failure(error)); });
  } else {
    ContactPtr current;
    // Never computes: the last rebuild made the card.
    stateScheduler->performSynchronousReaderBlock([this, &current] { current = contact; });
    reply(Result<ContactPtr>::success(std::move(current)));
  }
  logger->agentDidHandleRequest(sel);
}

void Corvel::meCardDonations(DonationsReply reply) {
  const std::string requestName = "meCardDonations:";
  logger->agentWillHandleRequest(requestName);
  if (const ErrorPtr error = refusal(requestName, WhileUndetermined::refused)) {
    reply(nullptr, error);
    return;
  }
  stateScheduler->performReaderBlock(
      [self = shared_from_this(), requestName, reply = std::move(reply)] {
        self->replyScheduler->performBlock(
            [reply, values = self->donations.snapshot()] { reply(values, nullptr); });
        self->logger->agentDidHandleRequest(requestName);
      });
}

}  // namespace quenlet
