#pragma once

#include <atomic>
#include <chrono>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "platform/donations/CorvelProtocol.h"
#include "platform/foundation/Mutex.h"
#include "platform/ipc/ServiceClient.h"

namespace quenlet {

// The agent, as a program sees it that donates values or reads the donated me card. It asks the
// user's running agent over its socket; the agent answers programs that are entitled.
//
//   CorvelProxy agent;
//   const Date now = Date::now();
//   const DonationOrigin origin{"com.example.mail", "com.example.mail:account-1", std::nullopt,
//                               now, now.addingSeconds(90 * 86400.0)};
//   agent.donateMeCardValues(
//       {DonationValue::donationValueWithEmailAddress("ann@example.org", LabelHome, origin)},
//       [](const ErrorPtr& error) {
//         if (error) std::cerr << error->description() << "\n";
//       });
//
// A donation replaces the one that has the same donation identifier, whoever donated it: let
// identifiers begin with the bundle identifier. To wait for a reply on the spot, see
// client/waitForReply.h.
//
// Thread-safe. Every operation calls its handler exactly once and never throws. Handlers run on a
// thread of the proxy's, one at a time, or, when the agent cannot be reached or the operation is
// synchronousDonatedMeCard(), on the calling thread before the operation returns. A handler may
// call the proxy, but must not wait for another reply and must not destroy the proxy.
//
// Besides the agent's own errors, which come unchanged, there are ServiceErrorDomain errors:
// noService when no agent runs, connectionBroken when it ended before its reply, timedOut when it
// did not reply within the time limit (whether it did what it was asked is then unknown; all
// operations may be repeated), malformedMessage for a reply that makes no sense. The connection is
// made at the first operation, and made anew at the next one after it broke.
class CorvelProxy final : public CorvelProtocol {
 public:
  using Connect = std::function<Result<std::shared_ptr<ServiceClient>>()>;

  // Speaks to the user's agent, and waits `timeLimit` at most to be connected to it, and for each
  // reply; with `connectToAgent`, speaks to whoever that connects to.
  explicit CorvelProxy(std::chrono::milliseconds timeLimit = ServiceClient::standardTimeLimit);
  explicit CorvelProxy(Connect connectToAgent);
  // What is under way is replied to with connectionBroken before this returns.
  ~CorvelProxy() override = default;
  CorvelProxy(const CorvelProxy&) = delete;
  CorvelProxy& operator=(const CorvelProxy&) = delete;

  void donateMeCardValues(DonationValues values, ErrorReply completionHandler) override;
  void removeDonatedMeCardValuesForIdentifiers(std::vector<std::string> identifiers,
                                               SuccessReply completionHandler) override;
  void removeDonatedMeCardValuesWithBundleIdentifier(std::string bundleIdentifier,
                                                     SuccessReply completionHandler) override;
  void fetchDonatedMeCard(ContactReply reply) override;
  // Waits for the agent on the calling thread and needs no other one.
  void synchronousDonatedMeCard(EitherContactReply reply) override;
  void meCardDonations(DonationsReply reply) override;
  void changeFromAccount(AccountPtr oldAccount, AccountPtr toAccount,
                         ErrorReply completionHandler) override;
  void rejectValueWithDonationIdentifier(std::string donationIdentifier,
                                         ErrorReply completionHandler) override;
  void rejectValuesWithClusterIdentifier(std::string clusterIdentifier,
                                         ErrorReply completionHandler) override;
  void removeAllRejectionsWithCompletionHandler(ErrorReply completionHandler) override;

 private:
  // One connection, and how many calls of it have not been replied to.
  struct Connection final {
    explicit Connection(std::shared_ptr<ServiceClient> connected) : client(std::move(connected)) {}
    std::atomic<int> callsUnderWay = 0;
    // Goes first: its end replies to the calls under way.
    std::shared_ptr<ServiceClient> client;
  };
  using ConnectionPtr = std::shared_ptr<Connection>;

  // A living connection, whose calls under way are one more.
  [[nodiscard]] Result<ConnectionPtr> takeConnection() EXCLUDES(mutex);
  [[nodiscard]] ConnectionPtr livingConnection() REQUIRES(mutex);
  void call(const char* selector, std::string encodedArguments,
            ServiceClient::Completion completion);
  void callForError(const char* selector, std::string encodedArguments, ErrorReply reply);
  void callForSuccess(const char* selector, std::string encodedArguments, SuccessReply reply);

  const Connect connect;
  Mutex mutex;
  ConnectionPtr current GUARDED_BY(mutex);
  // Broken connections that still have replies to give.
  std::vector<ConnectionPtr> retired GUARDED_BY(mutex);
};

}  // namespace quenlet
