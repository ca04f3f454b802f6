#include "core/CorvelDispatcher.h"

#include <map>
#include <string_view>

#include "platform/PlatformServices.h"
#include "platform/ipc/ErrorWire.h"
#include "platform/scheduling/runGuarded.h"
#include "protocol/AccountWire.h"
#include "protocol/ContactWire.h"
#include "protocol/CorvelInterface.h"
#include "protocol/DonationWire.h"
#include "protocol/EncodedReplies.h"

namespace quenlet {
namespace {

ErrorReply errorReply(WireReply reply) {
  return [reply = std::move(reply)](const ErrorPtr& error) {
    WireEncoder encoder;
    ErrorWire::encode(encoder, error);
    reply(std::move(encoder).take());
  };
}

SuccessReply successReply(WireReply reply) {
  return [reply = std::move(reply)](bool success, const ErrorPtr& error) {
    WireEncoder encoder;
    encoder.boolean(success);
    ErrorWire::encode(encoder, error);
    reply(std::move(encoder).take());
  };
}

constexpr std::size_t maximumIdentifiersInRemoval = 100'000;

// The next argument, which the interface declares as a string.
std::string textArgument(WireReader& arguments) {
  return std::string(arguments.string().value_or(std::string_view()));
}

Result<std::vector<std::string>> textListArgument(WireReader& arguments) {
  using Outcome = Result<std::vector<std::string>>;
  std::vector<std::string> texts;
  const std::size_t count = arguments.list().value_or(0);
  // Checked before anything is built: an empty text is 2 bytes of a message, but many in memory.
  if (count > maximumIdentifiersInRemoval) {
    return Outcome::failure(makeServiceError(
        ServiceErrorCode::invalidArguments,
        "a removal holds at most " + std::to_string(maximumIdentifiersInRemoval) + " identifiers"));
  }
  texts.reserve(count);
  for (std::size_t i = 0; i < count; ++i) {
    const std::optional<std::string_view> text = arguments.string();
    if (!text) {
      return Outcome::failure(makeServiceError(ServiceErrorCode::invalidArguments,
                                               "element " + std::to_string(i) + " is not a text"));
    }
    texts.emplace_back(*text);
  }
  return Outcome::success(std::move(texts));
}

}  // namespace

void CorvelDispatcher::perform(const std::string& selector, WireReader arguments, WireReply reply) {
  using Operation = void (CorvelDispatcher::*)(WireReader, WireReply) const;
  static const std::map<std::string_view, Operation> operations = {
      {CorvelSelector::donate, &CorvelDispatcher::donate},
      {CorvelSelector::removeIdentifiers, &CorvelDispatcher::removeIdentifiers},
      {CorvelSelector::removeBundle, &CorvelDispatcher::removeBundle},
      {CorvelSelector::fetch, &CorvelDispatcher::fetch},
      {CorvelSelector::synchronousFetch, &CorvelDispatcher::synchronousFetch},
      {CorvelSelector::list, &CorvelDispatcher::list},
      {CorvelSelector::changeAccount, &CorvelDispatcher::changeAccount},
      {CorvelSelector::rejectValue, &CorvelDispatcher::rejectValue},
      {CorvelSelector::rejectCluster, &CorvelDispatcher::rejectCluster},
      {CorvelSelector::removeRejections, &CorvelDispatcher::removeRejections},
  };
  // The connection has checked the selector against the same interface, so at() finds it. If the
  // operation throws, its reply is destroyed uncalled, and the client hears so.
  runGuarded([&] { (this->*operations.at(selector))(arguments, std::move(reply)); });
}

void CorvelDispatcher::donate(WireReader arguments, WireReply reply) const {
  Result<DonationValues> values = gateAdmitsClient() ? DonationWire::decodeDonated(arguments)
                                                     : Result<DonationValues>::success({});
  ErrorReply completionHandler = errorReply(std::move(reply));
  if (!values.ok()) {
    completionHandler(values.error());
    return;
  }
  gate->donateMeCardValues(std::move(values).takeValue(), std::move(completionHandler));
}

void CorvelDispatcher::removeIdentifiers(WireReader arguments, WireReply reply) const {
  using Identifiers = Result<std::vector<std::string>>;
  Identifiers identifiers =
      gateAdmitsClient() ? textListArgument(arguments) : Identifiers::success({});
  SuccessReply completionHandler = successReply(std::move(reply));
  if (!identifiers.ok()) {
    completionHandler(false, identifiers.error());
    return;
  }
  gate->removeDonatedMeCardValuesForIdentifiers(std::move(identifiers).takeValue(),
                                                std::move(completionHandler));
}

void CorvelDispatcher::removeBundle(WireReader arguments, WireReply reply) const {
  gate->removeDonatedMeCardValuesWithBundleIdentifier(textArgument(arguments),
                                                      successReply(std::move(reply)));
}

void CorvelDispatcher::fetch(WireReader, WireReply reply) const {
  gate->fetchDonatedMeCard(
      [reply = std::move(reply)](const ContactPtr& contact, const ErrorPtr& error) {
        if (!reply.isWanted()) return;
        if (contact) return reply(EncodedCard::fetchReply(contact));
        WireEncoder encoder;
        encoder.null();
        ErrorWire::encode(encoder, error);
        reply(std::move(encoder).take());
      });
}

void CorvelDispatcher::synchronousFetch(WireReader, WireReply reply) const {
  gate->synchronousDonatedMeCard(
      [reply = std::move(reply)](const Result<ContactPtr>& contactOrError) {
        if (!reply.isWanted()) return;
        if (contactOrError.ok()) {
          return reply(EncodedCard::synchronousReply(contactOrError.value()));
        }
        WireEncoder encoder;
        ContactWire::encodeEither(encoder, contactOrError);
        reply(std::move(encoder).take());
      });
}

void CorvelDispatcher::list(WireReader, WireReply reply) const {
  gate->meCardDonations(
      [reply = std::move(reply), replies = listReplies](
          const std::shared_ptr<const DonationValues>& values, const ErrorPtr& error) {
        if (!reply.isWanted()) return;
        if (values) return reply(replies->replyFor(values));
        WireEncoder encoder;
        encoder.null();
        ErrorWire::encode(encoder, error);
        reply(std::move(encoder).take());
      });
}

void CorvelDispatcher::changeAccount(WireReader arguments, WireReply reply) const {
  // Accounts refer to their store weakly, and count as dead once it is gone.
  const auto store = gateAdmitsClient() ? PlatformServices::current().makeAccountStore() : nullptr;
  const auto account = [&store, &arguments] {
    return store ? AccountWire::decode(arguments, store) : Result<AccountPtr>::success(nullptr);
  };
  const Result<AccountPtr> oldAccount = account();
  const Result<AccountPtr> newAccount = account();
  ErrorReply completionHandler = errorReply(std::move(reply));
  if (!oldAccount.ok() || !newAccount.ok()) {
    completionHandler(oldAccount.ok() ? newAccount.error() : oldAccount.error());
    return;
  }
  gate->changeFromAccount(oldAccount.value(), newAccount.value(), std::move(completionHandler));
}

void CorvelDispatcher::rejectValue(WireReader arguments, WireReply reply) const {
  gate->rejectValueWithDonationIdentifier(textArgument(arguments), errorReply(std::move(reply)));
}

void CorvelDispatcher::rejectCluster(WireReader arguments, WireReply reply) const {
  gate->rejectValuesWithClusterIdentifier(textArgument(arguments), errorReply(std::move(reply)));
}

void CorvelDispatcher::removeRejections(WireReader, WireReply reply) const {
  gate->removeAllRejectionsWithCompletionHandler(errorReply(std::move(reply)));
}

}  // namespace quenlet
