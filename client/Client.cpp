#include "quenlet/Client.h"

#include <system_error>
#include <type_traits>
#include <utility>

#include "client/CardFollower.h"
#include "client/Conversion.h"
#include "client/CorvelProxy.h"
#include "client/HandlerSlot.h"
#include "platform/files/UserDirectories.h"
#include "platform/ipc/HandlerLoop.h"
#include "platform/notifications/NotificationDirectory.h"

namespace quenlet {
namespace {

using Donations = Result<std::vector<Donation>>;

Result<Card> cardOf(const ContactPtr& contact, const ErrorPtr& error) {
  if (!contact) return Result<Card>::failure(error);
  return Result<Card>::success(Conversion::card(*contact));
}

Donations donationsOf(const std::shared_ptr<const DonationValues>& values, const ErrorPtr& error) {
  if (!values) return Donations::failure(error);
  return Donations::success(Conversion::donations(*values));
}

// A success or an error; the wire allows neither.
SuccessReply successReply(Client::ErrorHandler handler) {
  return [handler = std::move(handler)](bool success, ErrorPtr error) {
    if (!success && !error) {
      error = makeServiceError(ServiceErrorCode::malformedMessage,
                               "the agent reported neither success nor an error");
    }
    handler(std::move(error));
  };
}

template <typename Outcome>
Outcome failedWith(ErrorPtr error) {
  if constexpr (std::is_same_v<Outcome, ErrorPtr>) {
    return error;
  } else {
    return Outcome::failure(std::move(error));
  }
}

// What each operation asks of an agent. The error is that of an argument which is not valid: then
// the agent is not asked, and the reply not called.

ErrorPtr fetchCard(CorvelProtocol& agent, const Client::CardHandler& reply) {
  agent.fetchDonatedMeCard(
      [reply](const ContactPtr& contact, const ErrorPtr& error) { reply(cardOf(contact, error)); });
  return nullptr;
}

ErrorPtr waitForCard(CorvelProtocol& agent, const Client::CardHandler& reply) {
  agent.synchronousDonatedMeCard([&reply](const Result<ContactPtr>& contact) {
    reply(contact.ok() ? cardOf(contact.value(), nullptr) : cardOf(nullptr, contact.error()));
  });
  return nullptr;
}

ErrorPtr list(CorvelProtocol& agent, const Client::DonationsHandler& reply) {
  agent.meCardDonations(
      [reply](const auto& values, const ErrorPtr& error) { reply(donationsOf(values, error)); });
  return nullptr;
}

auto donation(std::vector<Donation> values) {
  return [values = std::move(values)](CorvelProtocol& agent, Client::ErrorHandler reply) mutable {
    Result<DonationValues> converted = Conversion::donationValues(std::move(values));
    if (!converted.ok()) return converted.error();
    agent.donateMeCardValues(std::move(converted).takeValue(), std::move(reply));
    return ErrorPtr();
  };
}

auto removal(std::vector<std::string> identifiers) {
  return [identifiers = std::move(identifiers)](CorvelProtocol& agent,
                                                Client::ErrorHandler reply) mutable {
    agent.removeDonatedMeCardValuesForIdentifiers(std::move(identifiers),
                                                  successReply(std::move(reply)));
    return ErrorPtr();
  };
}

auto bundleRemoval(std::string bundle) {
  return [bundle = std::move(bundle)](CorvelProtocol& agent, Client::ErrorHandler reply) mutable {
    agent.removeDonatedMeCardValuesWithBundleIdentifier(std::move(bundle),
                                                        successReply(std::move(reply)));
    return ErrorPtr();
  };
}

auto accountChange(std::optional<AccountRecord> before, std::optional<AccountRecord> after) {
  return [before = std::move(before), after = std::move(after)](
             CorvelProtocol& agent, Client::ErrorHandler reply) mutable {
    const Result<AccountPtr> oldAccount = Conversion::account(std::move(before));
    if (!oldAccount.ok()) return oldAccount.error();
    const Result<AccountPtr> newAccount = Conversion::account(std::move(after));
    if (!newAccount.ok()) return newAccount.error();
    agent.changeFromAccount(oldAccount.value(), newAccount.value(), std::move(reply));
    return ErrorPtr();
  };
}

auto rejection(std::string identifier) {
  return [identifier = std::move(identifier)](CorvelProtocol& agent,
                                              Client::ErrorHandler reply) mutable {
    agent.rejectValueWithDonationIdentifier(std::move(identifier), std::move(reply));
    return ErrorPtr();
  };
}

auto clusterRejection(std::string identifier) {
  return [identifier = std::move(identifier)](CorvelProtocol& agent,
                                              Client::ErrorHandler reply) mutable {
    agent.rejectValuesWithClusterIdentifier(std::move(identifier), std::move(reply));
    return ErrorPtr();
  };
}

Result<std::shared_ptr<CardFollower>> startFollower(const std::shared_ptr<ClientLoop>& loop,
                                                    std::shared_ptr<CorvelProtocol> agent,
                                                    const Client::CardHandler& handler) {
  const auto runtime = UserDirectories::runtimeDirectory();
  if (!runtime.ok()) return Result<std::shared_ptr<CardFollower>>::failure(runtime.error());
  return CardFollower::start(loop, std::move(agent), NotificationDirectory::below(runtime.value()),
                             handler);
}

ErrorPtr removeRejections(CorvelProtocol& agent, Client::ErrorHandler reply) {
  agent.removeAllRejectionsWithCompletionHandler(std::move(reply));
  return nullptr;
}

}  // namespace

// The client's connection, and two ways over it: one that waits, and, once a handler needs it, one
// whose replies come on the loop for handlers.
class Client::Implementation final {
 public:
  Implementation(std::chrono::milliseconds timeLimit, Handlers place)
      : handlersRun(place), connection(std::make_shared<AgentConnection>(timeLimit)) {}
  ~Implementation();
  Implementation(const Implementation&) = delete;
  Implementation& operator=(const Implementation&) = delete;

  template <typename Outcome, typename Operation>
  [[nodiscard]] Outcome wait(Operation operation);
  template <typename Outcome, typename Operation>
  Call begin(std::function<void(Outcome)> handler, Operation operation);
  Call follow(CardHandler handler);
  [[nodiscard]] Result<int> descriptor();
  void dispatch();

 private:
  struct Handling final {
    Handling(HandlerLoop::Thread thread, const std::shared_ptr<AgentConnection>& connection)
        : handlers(thread), agent(std::make_shared<CorvelProxy>(connection, handlers.loop())) {}
    HandlerLoop handlers;
    const std::shared_ptr<CorvelProxy> agent;
  };

  // Creates it at the first call. The error is the system's.
  [[nodiscard]] Result<Handling*> handling() EXCLUDES(mutex);

  const Handlers handlersRun;
  const std::shared_ptr<AgentConnection> connection;
  CorvelProxy waitingAgent{connection, nullptr};
  Mutex mutex;
  std::vector<std::shared_ptr<CardFollower>> followers GUARDED_BY(mutex);
  std::unique_ptr<Handling> current GUARDED_BY(mutex);
};

Client::Implementation::~Implementation() {
  Handling* ending = nullptr;
  {
    MutexLock lock(mutex);
    for (const auto& follower : followers) follower->cancel();
    ending = current.get();
  }
  connection->stop();
  // Without the lock: it runs the handlers that still wait, and they may use the client.
  if (ending != nullptr) ending->handlers.finish();
}

Result<Client::Implementation::Handling*> Client::Implementation::handling() try {
  MutexLock lock(mutex);
  if (!current) {
    const auto thread = handlersRun == Handlers::onOwnThread ? HandlerLoop::Thread::own
                                                             : HandlerLoop::Thread::callers;
    current = std::make_unique<Handling>(thread, connection);
  }
  return Result<Handling*>::success(current.get());
} catch (const std::system_error& failure) {
  return Result<Handling*>::failure(
      makePosixError(failure.code().value(), "prepare for a client's handlers"));
}

template <typename Outcome, typename Operation>
Outcome Client::Implementation::wait(Operation operation) {
  std::optional<Outcome> outcome;
  ErrorPtr error =
      operation(waitingAgent, [&outcome](Outcome reply) { outcome = std::move(reply); });
  return error ? failedWith<Outcome>(std::move(error)) : *std::move(outcome);
}

template <typename Outcome, typename Operation>
Client::Call Client::Implementation::begin(std::function<void(Outcome)> handler,
                                           Operation operation) {
  const auto slot = std::make_shared<HandlerSlot<Outcome>>(std::move(handler));
  const auto reply = [slot](Outcome outcome) { slot->deliverLast(std::move(outcome)); };
  if (const auto used = handling(); !used.ok()) {
    reply(failedWith<Outcome>(used.error()));
  } else if (ErrorPtr error = operation(*used.value()->agent, reply)) {
    used.value()->handlers.loop()->events.post(
        [reply, error = std::move(error)] { reply(failedWith<Outcome>(error)); });
  }
  return Call([slot] { slot->cancel(); });
}

Client::Call Client::Implementation::follow(CardHandler handler) {
  const auto used = handling();
  if (!used.ok()) {
    handler(Result<Card>::failure(used.error()));
    return Call([] {});
  }
  auto& [handlers, agent] = *used.value();
  const auto started = startFollower(handlers.loop(), agent, handler);
  if (!started.ok()) {
    handlers.loop()->events.post([handler = std::move(handler), error = started.error()] {
      handler(Result<Card>::failure(error));
    });
    return Call([] {});
  }
  MutexLock lock(mutex);
  std::erase_if(followers, [](const auto& follower) { return follower->isCancelled(); });
  followers.push_back(started.value());
  return Call([weak = std::weak_ptr(started.value())] {
    if (const auto follower = weak.lock()) follower->cancel();
  });
}

Result<int> Client::Implementation::descriptor() {
  if (handlersRun != Handlers::inDispatch) {
    return Result<int>::failure(makeServiceError(ServiceErrorCode::invalidArguments,
                                                 "the client's handlers have their own thread"));
  }
  const auto used = handling();
  if (!used.ok()) return Result<int>::failure(used.error());
  return Result<int>::success(used.value()->handlers.loop()->events.descriptor());
}

void Client::Implementation::dispatch() {
  if (handlersRun != Handlers::inDispatch) return;
  if (const auto used = handling(); used.ok()) used.value()->handlers.loop()->events.dispatch();
}

void Client::Call::cancel() const { end(); }

Client::Client(std::chrono::milliseconds timeLimit, Handlers handlers)
    : implementation(std::make_unique<Implementation>(timeLimit, handlers)) {}

Client::~Client() = default;

Result<int> Client::fd() { return implementation->descriptor(); }

void Client::dispatch() { implementation->dispatch(); }

Result<Card> Client::card() { return implementation->wait<Result<Card>>(waitForCard); }

Client::Call Client::card(CardHandler handler) {
  return implementation->begin(std::move(handler), fetchCard);
}

Client::Call Client::onCardChange(CardHandler handler) {
  return implementation->follow(std::move(handler));
}

Donations Client::donations() { return implementation->wait<Donations>(list); }

Client::Call Client::donations(DonationsHandler handler) {
  return implementation->begin(std::move(handler), list);
}

ErrorPtr Client::donate(std::vector<Donation> values) {
  return implementation->wait<ErrorPtr>(donation(std::move(values)));
}

Client::Call Client::donate(std::vector<Donation> values, ErrorHandler handler) {
  return implementation->begin(std::move(handler), donation(std::move(values)));
}

ErrorPtr Client::remove(std::vector<std::string> donationIdentifiers) {
  return implementation->wait<ErrorPtr>(removal(std::move(donationIdentifiers)));
}

Client::Call Client::remove(std::vector<std::string> donationIdentifiers, ErrorHandler handler) {
  return implementation->begin(std::move(handler), removal(std::move(donationIdentifiers)));
}

ErrorPtr Client::removeBundle(std::string bundleIdentifier) {
  return implementation->wait<ErrorPtr>(bundleRemoval(std::move(bundleIdentifier)));
}

Client::Call Client::removeBundle(std::string bundleIdentifier, ErrorHandler handler) {
  return implementation->begin(std::move(handler), bundleRemoval(std::move(bundleIdentifier)));
}

ErrorPtr Client::changeAccount(std::optional<AccountRecord> before,
                               std::optional<AccountRecord> after) {
  return implementation->wait<ErrorPtr>(accountChange(std::move(before), std::move(after)));
}

Client::Call Client::changeAccount(std::optional<AccountRecord> before,
                                   std::optional<AccountRecord> after, ErrorHandler handler) {
  return implementation->begin(std::move(handler),
                               accountChange(std::move(before), std::move(after)));
}

ErrorPtr Client::reject(std::string donationIdentifier) {
  return implementation->wait<ErrorPtr>(rejection(std::move(donationIdentifier)));
}

Client::Call Client::reject(std::string donationIdentifier, ErrorHandler handler) {
  return implementation->begin(std::move(handler), rejection(std::move(donationIdentifier)));
}

ErrorPtr Client::rejectCluster(std::string clusterIdentifier) {
  return implementation->wait<ErrorPtr>(clusterRejection(std::move(clusterIdentifier)));
}

Client::Call Client::rejectCluster(std::string clusterIdentifier, ErrorHandler handler) {
  return implementation->begin(std::move(handler), clusterRejection(std::move(clusterIdentifier)));
}

ErrorPtr Client::removeAllRejections() { return implementation->wait<ErrorPtr>(removeRejections); }

Client::Call Client::removeAllRejections(ErrorHandler handler) {
  return implementation->begin(std::move(handler), removeRejections);
}

}  // namespace quenlet
