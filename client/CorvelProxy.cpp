#include "client/CorvelProxy.h"

#include <algorithm>
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
    : CorvelProxy([patience] {
        return ServiceClient::connect(CorvelServiceName, makeCorvelInterface(), patience);
      }) {}

CorvelProxy::CorvelProxy(Connect connectToAgent) : connect(std::move(connectToAgent)) {}

CorvelProxy::ConnectionPtr CorvelProxy::livingConnection() {
  if (!current || current->client->isBroken()) return nullptr;
  ++current->callsUnderWay;
  return current;
}

// Returns a working connection and counts the call. A broken one cannot be destroyed at once: its
// destructor joins the thread that runs the handlers, and a handler may be calling this.
//
//   current --broken, at the next call--> retired --callsUnderWay is 0--> finished: destroyed here,
//                                                                         after the lock
Result<CorvelProxy::ConnectionPtr> CorvelProxy::takeConnection() {
  {
    MutexLock lock(mutex);
    if (ConnectionPtr living = livingConnection()) return Result<ConnectionPtr>::success(living);
  }
  // Connecting can take as long as the time limit, so not under the lock. Another thread may have
  // connected meanwhile; then ours is dropped unused.
  Result<std::shared_ptr<ServiceClient>> connected = connect();
  if (!connected.ok()) return Result<ConnectionPtr>::failure(connected.error());
  std::vector<ConnectionPtr> finished;
  MutexLock lock(mutex);
  if (ConnectionPtr living = livingConnection()) return Result<ConnectionPtr>::success(living);
  if (current) retired.push_back(std::move(current));
  const auto busy = std::partition(retired.begin(), retired.end(), [](const ConnectionPtr& old) {
    return old->callsUnderWay == 0;
  });
  finished.assign(std::make_move_iterator(retired.begin()), std::make_move_iterator(busy));
  retired.erase(retired.begin(), busy);
  current = std::make_shared<Connection>(connected.value());
  ++current->callsUnderWay;
  return Result<ConnectionPtr>::success(current);
}

void CorvelProxy::call(const char* selector, std::string encodedArguments,
                       ServiceClient::Completion completion) {
  const Result<ConnectionPtr> connection = takeConnection();
  if (!connection.ok()) {
    completion(Result<std::string>::failure(connection.error()));
    return;
  }
  // By reference: the connection lives until all its completions have returned, and a completion
  // that owned it could destroy it on its own thread.
  Connection& used = *connection.value();
  used.client->call(selector, std::move(encodedArguments),
                    [&used, completion = std::move(completion)](Result<std::string> reply) {
                      completion(std::move(reply));
                      --used.callsUnderWay;
                    });
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
  const Result<ConnectionPtr> connection = takeConnection();
  if (!connection.ok()) return reply(Result<ContactPtr>::failure(connection.error()));
  const Result<std::string> outcome =
      connection.value()->client->callSynchronously(CorvelSelector::synchronousFetch, {});
  --connection.value()->callsUnderWay;
  reply(decodeEitherReply(outcome));
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
