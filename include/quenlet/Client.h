#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "quenlet/AccountRecord.h"
#include "quenlet/Card.h"
#include "quenlet/Donation.h"
#include "quenlet/Error.h"
#include "quenlet/Export.h"
#include "quenlet/Result.h"

namespace quenlet {

// The user's agent, for programs that donate values or read the donated me card. The agent serves
// only entitled programs.
//
//   quenlet::Client agent;
//   const quenlet::ErrorPtr error = agent.donate(
//       {{.content = quenlet::Email{"ann@example.org", "home"},
//         .bundleIdentifier = "com.example.mail",
//         .donationIdentifier = "com.example.mail:account-1:email"}});
//   if (error) std::cerr << error->description() << "\n";
//
// Each operation but onCardChange() exists twice. Without a handler it waits, on the calling thread
// alone, and returns the outcome; a null ErrorPtr is success. With a handler it returns at once;
// the handler is called exactly once, one handler at a time, and never within the operation.
// Handlers are not empty and do not throw. They may use the client, but must not dispatch or
// destroy it. An operation may wait for the agent to accept a connection, within the time limit.
//
// Handlers run on a thread of the client's, which the first one starts, or where the program calls
// dispatch(): to be used in an event loop, without a thread.
//
//   using quenlet::Client;
//   Client agent(Client::standardTimeLimit, Client::Handlers::inDispatch);
//   agent.card([](quenlet::Result<quenlet::Card> card) { … });
//   // Whenever agent.fd().value() is readable:
//   agent.dispatch();
//
// The agent's errors are passed on unchanged. Further errors are of ServiceErrorDomain: noService
// when no agent runs; connectionBroken when it ended before its answer; timedOut when it did not
// answer within the time limit; malformedMessage for an answer that is not valid; messageTooLarge
// for a request of more than 32 MiB; invalidArguments for an argument that is not valid. After
// connectionBroken and timedOut the agent may have done what it was asked, or still do it; all
// operations may be repeated. When the system has no thread or descriptor left for handlers, they
// get its error, on the calling thread.
//
// The client connects at the first operation, and again at the next one after the connection broke.
// Thread-safe; dispatch() on one thread at a time. After a fork the child must not use or destroy
// its parent's client.
class QUENLET_API Client final {
 public:
  using ErrorHandler = std::function<void(ErrorPtr error)>;
  using CardHandler = std::function<void(Result<Card> card)>;
  using DonationsHandler = std::function<void(Result<std::vector<Donation>> donations)>;

  // Where handlers run.
  enum class Handlers { onOwnThread, inDispatch };

  // What has been begun with a handler. May outlive the client. A value type.
  class QUENLET_API Call final {
   public:
    // The handler is not called any more, unless it is being called, and is destroyed. The agent
    // may do what it was asked all the same. Thread-safe; may be repeated.
    void cancel() const;

   private:
    friend class Client;
    explicit Call(std::function<void()> cancellation) : end(std::move(cancellation)) {}
    std::function<void()> end;
  };

  static constexpr std::chrono::milliseconds standardTimeLimit{25'000};

  // Asks no agent yet. `timeLimit` is for connecting and for each answer.
  explicit Client(std::chrono::milliseconds timeLimit = standardTimeLimit,
                  Handlers handlers = Handlers::onOwnThread);
  // Handlers that still wait get connectionBroken before this returns. What they begin is not done,
  // and its handlers are not called.
  ~Client();
  Client(const Client&) = delete;
  Client& operator=(const Client&) = delete;

  // The donated me card.
  [[nodiscard]] Result<Card> card();
  Call card(CardHandler handler);
  // Calls the handler with the card, and again whenever it has become another one, or cannot be had
  // for another reason, until this is cancelled. Goes on when the agent has been restarted; that an
  // agent ends is not told.
  Call onCardChange(CardHandler handler);

  // All donations, in the agent's order.
  [[nodiscard]] Result<std::vector<Donation>> donations();
  Call donations(DonationsHandler handler);

  // Donates all of `values` or, on an error, none. Succeeds once they are on the disk. The error is
  // invalidArguments if a phone number is not one.
  [[nodiscard]] ErrorPtr donate(std::vector<Donation> values);
  Call donate(std::vector<Donation> values, ErrorHandler handler);

  // Takes donations back. Identifiers that the agent does not know are ignored.
  [[nodiscard]] ErrorPtr remove(std::vector<std::string> donationIdentifiers);
  Call remove(std::vector<std::string> donationIdentifiers, ErrorHandler handler);

  // Takes back all donations of one bundle.
  [[nodiscard]] ErrorPtr removeBundle(std::string bundleIdentifier);
  Call removeBundle(std::string bundleIdentifier, ErrorHandler handler);

  // Tells the agent that an account was added (no `before`), changed or removed (no `after`), so
  // that it donates the values of `after` and takes back those of `before`. The error is
  // invalidArguments if an identifier is empty, or that of a property list that cannot be read.
  [[nodiscard]] ErrorPtr changeAccount(std::optional<AccountRecord> before,
                                       std::optional<AccountRecord> after);
  Call changeAccount(std::optional<AccountRecord> before, std::optional<AccountRecord> after,
                     ErrorHandler handler);

  // Removes all donations that equal this one in content and label, and keeps them away when they
  // are donated again. Finds no images.
  [[nodiscard]] ErrorPtr reject(std::string donationIdentifier);
  Call reject(std::string donationIdentifier, ErrorHandler handler);

  // The same for all donations of a cluster, images included.
  [[nodiscard]] ErrorPtr rejectCluster(std::string clusterIdentifier);
  Call rejectCluster(std::string clusterIdentifier, ErrorHandler handler);

  // The agent answers with success, but keeps its rejections.
  [[nodiscard]] ErrorPtr removeAllRejections();
  Call removeAllRejections(ErrorHandler handler);

  // For handlers that run in dispatch(): the descriptor that is readable when it is to be called,
  // the same one as long as the client lives. Only for polling. The error is the system's, or
  // invalidArguments if the handlers have a thread of their own.
  [[nodiscard]] Result<int> fd();
  // Runs the handlers that are due. Does not wait.
  void dispatch();

 private:
  class __attribute__((visibility("hidden"))) Implementation;
  const std::unique_ptr<Implementation> implementation;
};

}  // namespace quenlet
