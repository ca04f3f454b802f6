#include "client/CorvelProxy.h"

#include <utility>

#include "platform/ipc/ErrorWire.h"
#include "protocol/AccountWire.h"
#include "protocol/ContactWire.h"
#include "protocol/CorvelInterface.h"
#include "protocol/DonationWire.h"

namespace quenlet {
namespace {

ErrorPtr malformedReply(const char* sentence) {
  return makeServiceError(ServiceErrorCode::malformedMessage, sentence);
}

std::string encodedText(const std::string& text) {
  return std::move(WireEncoder().string(text)).take();
}

void decodeContactReply(const Result<std::string>& outcome, const ContactReply& reply) {
  if (!outcome.ok()) return reply(nullptr, outcome.error());
  WireReader values(outcome.value());
  ContactPtr contact = ContactWire::decode(values);
  if (const ErrorPtr error = ErrorWire::decode(values)) return reply(nullptr, error);
  if (!contact) return reply(nullptr, malformedReply("the agent's card is not readable"));
  reply(std::move(contact), nullptr);
}

void decodeDonationsReply(const Result<std::string>& outcome, const DonationsReply& reply) {
  if (!outcome.ok()) return reply(nullptr, outcome.error());
  WireReader values(outcome.value());
  WireReader listValue(values.skip());
  if (const ErrorPtr error = ErrorWire::decode(values)) return reply(nullptr, error);
  Result<DonationValues> list = DonationWire::decode(listValue);
  if (!list.ok()) {
    return reply(nullptr, malformedReply("the agent's list of donations is not readable"));
  }
  reply(std::make_shared<const DonationValues>(std::move(list).takeValue()), nullptr);
}

Result<ContactPtr> decodeEitherReply(const Result<std::string>& outcome) {
  if (!outcome.ok()) return Result<ContactPtr>::failure(outcome.error());
  WireReader values(outcome.value());
  return ContactWire::decodeEither(values);
}

}  // namespace

CorvelProxy::CorvelProxy(Patience patience)
    : CorvelProxy(std::make_shared<AgentConnection>(patience), nullptr) {}

CorvelProxy::CorvelProxy(std::shared_ptr<AgentConnection> shared,
                         std::shared_ptr<ClientLoop> handlerLoop)
    : connection(std::move(shared)), loop(std::move(handlerLoop)) {}

void CorvelProxy::call(const char* selector, std::string encodedArguments,
                       ServiceClient::Completion completion) {
  const auto client = connection->working();
  if (!client.ok() && loop) {
    loop->events.post([completion = std::move(completion), error = client.error()] {
      completion(Result<std::string>::failure(error));
    });
  } else if (!client.ok()) {
    completion(Result<std::string>::failure(client.error()));
  } else if (loop) {
    client.value()->call(selector, std::move(encodedArguments), std::move(completion), loop);
  } else {
    completion(client.value()->callAndWait(selector, std::move(encodedArguments)));
  }
}

void CorvelProxy::callForError(const char* selector, std::string encodedArguments,
                               ErrorReply reply) {
  call(selector, std::move(encodedArguments),
       [reply = std::move(reply)](const Result<std::string>& outcome) {
         if (!outcome.ok()) return reply(outcome.error());
         WireReader values(outcome.value());
         reply(ErrorWire::decode(values));
       });
}

void CorvelProxy::callForSuccess(const char* selector, std::string encodedArguments,
                                 SuccessReply reply) {
  call(selector, std::move(encodedArguments),
       [reply = std::move(reply)](const Result<std::string>& outcome) {
         if (!outcome.ok()) return reply(false, outcome.error());
         WireReader values(outcome.value());
         const bool success = values.boolean().value_or(false);
         const ErrorPtr error = ErrorWire::decode(values);
         reply(success && !error, error);
       });
}

void CorvelProxy::donateMeCardValues(DonationValues values, ErrorReply completionHandler) {
  WireEncoder arguments;
  DonationWire::encode(arguments, values);
  callForError(CorvelSelector::donate, std::move(arguments).take(), std::move(completionHandler));
}

void CorvelProxy::removeDonatedMeCardValuesForIdentifiers(std::vector<std::string> identifiers,
                                                          SuccessReply completionHandler) {
  WireEncoder arguments;
  arguments.list(identifiers.size());
  for (const std::string& identifier : identifiers) arguments.string(identifier);
  callForSuccess(CorvelSelector::removeIdentifiers, std::move(arguments).take(),
                 std::move(completionHandler));
}

void CorvelProxy::removeDonatedMeCardValuesWithBundleIdentifier(std::string bundleIdentifier,
                                                                SuccessReply completionHandler) {
  callForSuccess(CorvelSelector::removeBundle, encodedText(bundleIdentifier),
                 std::move(completionHandler));
}

void CorvelProxy::fetchDonatedMeCard(ContactReply reply) {
  call(CorvelSelector::fetch, {}, [reply = std::move(reply)](const Result<std::string>& outcome) {
    decodeContactReply(outcome, reply);
  });
}

void CorvelProxy::synchronousDonatedMeCard(EitherContactReply reply) {
  const auto client = connection->working();
  if (!client.ok()) return reply(Result<ContactPtr>::failure(client.error()));
  reply(decodeEitherReply(client.value()->callAndWait(CorvelSelector::synchronousFetch, {})));
}

void CorvelProxy::meCardDonations(DonationsReply reply) {
  call(CorvelSelector::list, {}, [reply = std::move(reply)](const Result<std::string>& outcome) {
    decodeDonationsReply(outcome, reply);
  });
}

void CorvelProxy::changeFromAccount(AccountPtr oldAccount, AccountPtr toAccount,
                                    ErrorReply completionHandler) {
  WireEncoder arguments;
  AccountWire::encode(arguments, oldAccount);
  AccountWire::encode(arguments, toAccount);
  callForError(CorvelSelector::changeAccount, std::move(arguments).take(),
               std::move(completionHandler));
}

void CorvelProxy::rejectValueWithDonationIdentifier(std::string donationIdentifier,
                                                    ErrorReply completionHandler) {
  callForError(CorvelSelector::rejectValue, encodedText(donationIdentifier),
               std::move(completionHandler));
}

void CorvelProxy::rejectValuesWithClusterIdentifier(std::string clusterIdentifier,
                                                    ErrorReply completionHandler) {
  callForError(CorvelSelector::rejectCluster, encodedText(clusterIdentifier),
               std::move(completionHandler));
}

void CorvelProxy::removeAllRejectionsWithCompletionHandler(ErrorReply completionHandler) {
  callForError(CorvelSelector::removeRejections, {}, std::move(completionHandler));
}

}  // namespace quenlet
