#include "facade/AgentFacade.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "facade/CardForm.h"
#include "facade/DonationForm.h"
#include "facade/FacadeError.h"
#include "model/DonationRecord.h"
#include "platform/contacts/ValueBounds.h"

namespace quenlet {

struct AgentFacade::Call final {
  Requests request;
  BusValues arguments;
  CallerIdentity caller;
  Callers::Ticket ticket;

  void fail(const Error& error) const {
    request->fail(facadeErrorName(error), error.debugDescription());
  }
  // For an operation without a result.
  void finish(const ErrorPtr& error) const {
    if (error) return fail(*error);
    request->reply();
  }
};

namespace {

// What a caller would like to have of the card; an error when it cannot be understood.
Result<CardKinds> kindsIn(const BusDictionary& options) {
  const BusValue* named = findEntry(options, "kinds");
  if (named == nullptr) return Result<CardKinds>::success(usualCardKinds());
  const auto words = named->texts();
  CardKinds kinds;
  for (const std::string& word : words.value_or(std::vector<std::string>())) {
    const auto kind = cardKindFor(word);
    if (!kind) {
      return Result<CardKinds>::failure(makeFacadeError(InvalidArgsError, "a kind is unknown"));
    }
    kinds.insert(*kind);
  }
  if (!kinds.empty()) return Result<CardKinds>::success(std::move(kinds));
  return Result<CardKinds>::failure(makeFacadeError(InvalidArgsError, "kinds names none"));
}

std::string parentWindowIn(const BusDictionary& options) {
  constexpr std::size_t longestName = 1024;
  const std::string* window = findText(options, "parentWindow");
  return window == nullptr || window->size() > longestName ? "" : *window;
}

ErrorPtr withoutBundle(const std::vector<Donation>& donations) {
  const bool isWhole = std::none_of(donations.begin(), donations.end(), [](const auto& donation) {
    return donation.bundleIdentifier.empty();
  });
  return isWhole ? nullptr
                 : makeFacadeError(InvalidArgsError, "a donation has no bundleIdentifier");
}

std::vector<std::string> identifiersOf(const std::vector<Donation>& donations) {
  std::vector<std::string> identifiers;
  identifiers.reserve(donations.size());
  for (const Donation& donation : donations) identifiers.push_back(donation.donationIdentifier);
  return identifiers;
}

Result<std::string> identifierIn(const BusValue& argument) {
  if (argument.text()->size() <= mostBytesInIdentifier) {
    return Result<std::string>::success(*argument.text());
  }
  return Result<std::string>::failure(makeFacadeError(TooLargeError, "an identifier is too long"));
}

}  // namespace

AgentFacade::Operation AgentFacade::operationFor(const std::string& member) {
  static constexpr std::pair<const char*, Operation> operations[] = {
      {"Donate", &AgentFacade::donate},
      {"RemoveDonations", &AgentFacade::removeDonations},
      {"RemoveBundle", &AgentFacade::removeBundle},
      {"ListDonations", &AgentFacade::listDonations},
      {"GetCard", &AgentFacade::getCard},
      {"GetVCard", &AgentFacade::getVCard},
      {"Watch", &AgentFacade::watch},
      {"Unwatch", &AgentFacade::unwatch},
      {"ChangeAccount", &AgentFacade::changeAccount},
      {"RejectDonation", &AgentFacade::rejectDonation},
      {"RejectCluster", &AgentFacade::rejectCluster},
      {"RemoveAllRejections", &AgentFacade::removeAllRejections}};
  const auto* const found =
      std::find_if(std::begin(operations), std::end(operations),
                   [&member](const auto& operation) { return member == operation.first; });
  return found == std::end(operations) ? nullptr : found->second;
}

void AgentFacade::serve(const Requests& request, const BusValues& arguments,
                        const CallerIdentity& caller, const Callers::Ticket& ticket) {
  // The library has checked names and signatures. An unknown one is dropped, which answers it.
  if (const Operation operation = operationFor(request->member())) {
    (this->*operation)(std::make_shared<const Call>(Call{request, arguments, caller, ticket}));
  }
}

void AgentFacade::donate(const CallPtr& call) {
  auto read = donationsIn(call->arguments.front());
  if (!read.ok()) return call->fail(*read.error());
  std::vector<Donation> donations = std::move(read).takeValue();
  if (call->caller.app) return donateForApp(call, std::move(donations));
  if (const ErrorPtr error = withoutBundle(donations)) return call->fail(*error);
  for (const Donation& donation : donations) {
    const ErrorPtr refusal = HostGate::refusalOfBundle(call->caller, donation.bundleIdentifier);
    if (refusal) return call->fail(*refusal);
  }
  host.examineIdentifiers(
      call->caller, identifiersOf(donations), [this, call, donations](const ErrorPtr& refusal) {
        if (refusal) return call->fail(*refusal);
        agent.donate(donations, [call](const ErrorPtr& error) { call->finish(error); });
      });
}

void AgentFacade::donateForApp(const CallPtr& call, std::vector<Donation> donations) {
  const std::string& app = *call->caller.app;
  if (const ErrorPtr error = claimForApp(app, donations)) return call->fail(*error);
  apps.pass(
      {.wish = AppWish::donate, .app = app, .sender = call->request->sender()},
      [this, call, donations = std::move(donations)](const Result<AppPermission>& permission) {
        if (!permission.ok()) return call->fail(*permission.error());
        host.examineOwners({*call->caller.app}, identifiersOf(donations),
                           [this, call, donations](const ErrorPtr& refusal) {
                             if (refusal) return call->fail(*refusal);
                             agent.donate(donations,
                                          [call](const ErrorPtr& error) { call->finish(error); });
                           });
      });
}

void AgentFacade::removeDonations(const CallPtr& call) {
  auto read = identifiersIn(call->arguments.front());
  if (!read.ok()) return call->fail(*read.error());
  std::vector<std::string> identifiers = std::move(read).takeValue();
  if (call->caller.app) {
    for (std::string& identifier : identifiers) {
      identifier = identifierOfApp(*call->caller.app, identifier);
    }
  }
  const auto remove = [this, call, identifiers](const ErrorPtr& refusal) {
    if (refusal) return call->fail(*refusal);
    agent.remove(identifiers, [call](const ErrorPtr& error) { call->finish(error); });
  };
  if (call->caller.app) return host.examineOwners({*call->caller.app}, identifiers, remove);
  host.examineIdentifiers(call->caller, identifiers, remove);
}

void AgentFacade::removeBundle(const CallPtr& call) {
  const auto bundle = identifierIn(call->arguments.front());
  if (!bundle.ok()) return call->fail(*bundle.error());
  const bool isOwn = call->caller.app && *call->caller.app == bundle.value();
  const ErrorPtr refusal =
      isOwn ? nullptr : HostGate::refusalOfBundle(call->caller, bundle.value());
  if (refusal) return call->fail(*refusal);
  agent.removeBundle(bundle.value(), [call](const ErrorPtr& error) { call->finish(error); });
}

void AgentFacade::listDonations(const CallPtr& call) {
  const ErrorPtr refusal = call->caller.app ? nullptr : HostGate::refusalToRead(call->caller);
  if (refusal) return call->fail(*refusal);
  agent.donations([call](Result<std::vector<Donation>> held) {
    if (!held.ok()) return call->fail(*held.error());
    std::vector<Donation> donations = std::move(held).takeValue();
    if (call->caller.app) donations = donationsOfApp(*call->caller.app, std::move(donations));
    std::vector<BusDictionary> listed;
    listed.reserve(donations.size());
    for (const Donation& donation : donations) listed.push_back(donationDictionary(donation));
    call->request->reply("aa{sv}", {makeDictionaries(std::move(listed))});
  });
}

void AgentFacade::passToCard(const CallPtr& call, const BusDictionary& options, CardUse use) {
  const auto asked = kindsIn(options);
  if (!asked.ok()) return call->fail(*asked.error());
  if (!call->caller.app) {
    const ErrorPtr refusal = HostGate::refusalToRead(call->caller);
    return refusal ? call->fail(*refusal) : use(asked.value());
  }
  const AppRequest request{.wish = AppWish::meCard,
                           .app = *call->caller.app,
                           .sender = call->request->sender(),
                           .kinds = asked.value(),
                           .parentWindow = parentWindowIn(options)};
  apps.pass(request, [call, kinds = asked.value(), use = std::move(use)](const auto& permission) {
    if (!permission.ok()) return call->fail(*permission.error());
    const CardKinds& allowed = permission.value().kinds;
    CardKinds both;
    std::set_intersection(kinds.begin(), kinds.end(), allowed.begin(), allowed.end(),
                          std::inserter(both, both.end()));
    if (!both.empty()) return use(both);
    call->request->fail(NotPermittedError, "the owner does not allow these kinds to this app");
  });
}

void AgentFacade::answerWithCard(const CallPtr& call, CardAnswer answer) {
  passToCard(call, *call->arguments.front().dictionary(),
             [this, call, answer = std::move(answer)](const CardKinds& kinds) {
               agent.card([call, kinds, answer](Result<Card> card) {
                 if (!card.ok()) return call->fail(*card.error());
                 answer(*call, limitedTo(std::move(card).takeValue(), kinds));
               });
             });
}

void AgentFacade::getCard(const CallPtr& call) {
  answerWithCard(call, [](const Call& answered, const Card& card) {
    const Sources sources = answered.caller.app ? Sources::kept : Sources::told;
    answered.request->reply("a{sv}", {cardDictionary(card, sources)});
  });
}

void AgentFacade::getVCard(const CallPtr& call) {
  answerWithCard(call, [](const Call& answered, const Card& card) {
    answered.request->reply("s", {vCardOf(card)});
  });
}

void AgentFacade::watch(const CallPtr& call) {
  const auto add = [this, call] {
    const std::string sender = call->request->sender();
    // Nobody would take it off the list again.
    if (!isConnected(sender)) return;
    watchers.add(sender, call->caller, [call](const ErrorPtr& error) { call->finish(error); });
  };
  if (!call->caller.app) {
    const ErrorPtr refusal = HostGate::refusalToRead(call->caller);
    return refusal ? call->fail(*refusal) : add();
  }
  // Whichever kinds the owner allows it.
  apps.pass({.wish = AppWish::meCard,
             .app = *call->caller.app,
             .sender = call->request->sender(),
             .kinds = usualCardKinds()},
            [call, add](const auto& permission) {
              return permission.ok() ? add() : call->fail(*permission.error());
            });
}

void AgentFacade::unwatch(const CallPtr& call) {
  watchers.remove(call->request->sender());
  call->request->reply();
}

void AgentFacade::changeAccount(const CallPtr& call) {
  const ErrorPtr refusal = HostGate::refusalOfBundle(call->caller, AccountsBundleIdentifier);
  if (refusal) return call->fail(*refusal);
  const auto before = accountIn(call->arguments.front());
  if (!before.ok()) return call->fail(*before.error());
  const auto after = accountIn(call->arguments.back());
  if (!after.ok()) return call->fail(*after.error());
  agent.changeAccount(before.value(), after.value(),
                      [call](const ErrorPtr& error) { call->finish(error); });
}

void AgentFacade::rejectDonation(const CallPtr& call) {
  const ErrorPtr refusal = HostGate::refusalToReject(call->caller);
  if (refusal) return call->fail(*refusal);
  const auto identifier = identifierIn(call->arguments.front());
  if (!identifier.ok()) return call->fail(*identifier.error());
  agent.reject(identifier.value(), [call](const ErrorPtr& error) { call->finish(error); });
}

void AgentFacade::rejectCluster(const CallPtr& call) {
  const ErrorPtr refusal = HostGate::refusalToReject(call->caller);
  if (refusal) return call->fail(*refusal);
  const auto cluster = identifierIn(call->arguments.front());
  if (!cluster.ok()) return call->fail(*cluster.error());
  agent.rejectCluster(cluster.value(), [call](const ErrorPtr& error) { call->finish(error); });
}

void AgentFacade::removeAllRejections(const CallPtr& call) {
  const ErrorPtr refusal = HostGate::refusalToReject(call->caller);
  if (refusal) return call->fail(*refusal);
  agent.removeAllRejections([call](const ErrorPtr& error) { call->finish(error); });
}

}  // namespace quenlet
