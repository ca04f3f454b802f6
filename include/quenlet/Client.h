#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "quenlet/AccountRecord.h"
#include "quenlet/Card.h"
#include "quenlet/Donation.h"
#include "quenlet/Error.h"
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
// Each operation exists twice. Without a handler it waits and returns the outcome; a null ErrorPtr
// is success. With a handler it returns before the agent has answered, and the handler is called
// exactly once, on a thread of the client's, one handler at a time. It is called on the calling
// thread, before the operation returns, when the agent cannot be reached or an argument is not
// valid. Handlers are not empty and do not throw. They may start further operations, but must not
// wait for one and must not destroy the client.
//
// The agent's errors are passed on unchanged. Further errors are of ServiceErrorDomain: noService
// when no agent runs; connectionBroken when it ended before its answer; timedOut when it did not
// answer within the time limit; malformedMessage for an answer that is not valid; messageTooLarge
// for a request of more than 32 MiB; invalidArguments for an argument that is not valid. After
// connectionBroken and timedOut the agent may have done what it was asked, or still do it; all
// operations may be repeated.
//
// The client connects at the first operation, and again at the next one after the connection broke.
// Thread-safe.
class Client final {
 public:
  using ErrorHandler = std::function<void(ErrorPtr error)>;
  using CardHandler = std::function<void(Result<Card> card)>;
  using DonationsHandler = std::function<void(Result<std::vector<Donation>> donations)>;

  // Asks no agent yet. `timeLimit` is for connecting and for each answer.
  explicit Client(std::chrono::milliseconds timeLimit = std::chrono::seconds(25));
  // Handlers that still wait get connectionBroken before this returns.
  ~Client();
  Client(const Client&) = delete;
  Client& operator=(const Client&) = delete;

  // The donated me card.
  [[nodiscard]] Result<Card> card();
  void card(CardHandler handler);

  // All donations, in the agent's order.
  [[nodiscard]] Result<std::vector<Donation>> donations();
  void donations(DonationsHandler handler);

  // Donates all of `values` or, on an error, none. Succeeds once they are on the disk. The error is
  // invalidArguments if a phone number is not one.
  [[nodiscard]] ErrorPtr donate(std::vector<Donation> values);
  void donate(std::vector<Donation> values, ErrorHandler handler);

  // Takes donations back. Identifiers that the agent does not know are ignored.
  [[nodiscard]] ErrorPtr remove(std::vector<std::string> donationIdentifiers);
  void remove(std::vector<std::string> donationIdentifiers, ErrorHandler handler);

  // Takes back all donations of one bundle.
  [[nodiscard]] ErrorPtr removeBundle(std::string bundleIdentifier);
  void removeBundle(std::string bundleIdentifier, ErrorHandler handler);

  // Tells the agent that an account was added (no `before`), changed or removed (no `after`), so
  // that it donates the values of `after` and takes back those of `before`. The error is
  // invalidArguments if an identifier is empty, or that of a property list that cannot be read.
  [[nodiscard]] ErrorPtr changeAccount(std::optional<AccountRecord> before,
                                       std::optional<AccountRecord> after);
  void changeAccount(std::optional<AccountRecord> before, std::optional<AccountRecord> after,
                     ErrorHandler handler);

  // Removes all donations that equal this one in content and label, and keeps them away when they
  // are donated again. Finds no images.
  [[nodiscard]] ErrorPtr reject(std::string donationIdentifier);
  void reject(std::string donationIdentifier, ErrorHandler handler);

  // The same for all donations of a cluster, images included.
  [[nodiscard]] ErrorPtr rejectCluster(std::string clusterIdentifier);
  void rejectCluster(std::string clusterIdentifier, ErrorHandler handler);

  // The agent answers with success, but keeps its rejections.
  [[nodiscard]] ErrorPtr removeAllRejections();
  void removeAllRejections(ErrorHandler handler);

 private:
  class Implementation;
  const std::unique_ptr<Implementation> implementation;
};

}  // namespace quenlet
