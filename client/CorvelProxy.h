#pragma once

#include <atomic>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "platform/foundation/Mutex.h"
#include "platform/ipc/ServiceClient.h"
#include "protocol/CorvelProtocol.h"

namespace quenlet {

// The user's agent, seen from another process: every operation goes over its socket. For our own
// programs, on the agent's own types; programs of others use Client, which stands on this class.
// The agent serves only entitled programs.
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
// A donation replaces the one with the same donation identifier, even another donor's: begin
// identifiers with the bundle identifier. To wait for a reply, see client/waitForReply.h.
//
// Thread-safe. Every operation calls its handler exactly once and never throws. Handlers run on a
// thread of the proxy's, one at a time. When the agent cannot be reached, and for
// synchronousDonatedMeCard(), they run on the calling thread before the operation returns. A
// handler may call the proxy, but must not wait for another reply and must not destroy the proxy.
//
// The agent's own errors are passed on unchanged. The proxy adds ServiceErrorDomain errors:
// noService when no agent runs; connectionBroken when it ended before its reply; timedOut when it
// did not reply within the time limit (it may or may not have performed the operation, which may be
// repeated); malformedMessage for an invalid reply. The proxy connects at the first operation, and
// again at the next one after the connection broke.
class CorvelProxy final : public CorvelProtocol {
 public:
  using Connect = std::function<Result<std::shared_ptr<ServiceClient>>()>;

  // Connects to the user's agent, or with `connectToAgent`.
  explicit CorvelProxy(Patience patience = ServiceClient::standardTimeLimit);
  explicit CorvelProxy(Connect connectToAgent);
  // Pending operations fail with connectionBroken before this returns.
  ~CorvelProxy() override = default;
  CorvelProxy(const CorvelProxy&) = delete;
  CorvelProxy& operator=(const CorvelProxy&) = delete;

  void donateMeCardValues(DonationValues values, ErrorReply completionHandler) override;
  void removeDonatedMeCardValuesForIdentifiers(std::vector<std::string> identifiers,
                                               SuccessReply completionHandler) override;
  void removeDonatedMeCardValuesWithBundleIdentifier(std::string bundleIdentifier,
                                                     SuccessReply completionHandler) override;
  void fetchDonatedMeCard(ContactReply reply) override;
  // Waits for the agent on the calling thread; needs no other thread.
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
  // A connection with the number of its calls that have not been replied to.
  struct Connection final {
    explicit Connection(std::shared_ptr<ServiceClient> connected) : client(std::move(connected)) {}
    std::atomic<int> callsUnderWay = 0;
    // Destroyed first: its destructor runs the pending completions, which use callsUnderWay.
    std::shared_ptr<ServiceClient> client;
  };
  using ConnectionPtr = std::shared_ptr<Connection>;

  // Both return a working connection with one more call under way.
  [[nodiscard]] Result<ConnectionPtr> takeConnection() EXCLUDES(mutex);
  [[nodiscard]] ConnectionPtr livingConnection() REQUIRES(mutex);
  void call(const char* selector, std::string encodedArguments,
            ServiceClient::Completion completion);
  void callForError(const char* selector, std::string encodedArguments, ErrorReply reply);
  void callForSuccess(const char* selector, std::string encodedArguments, SuccessReply reply);

  const Connect connect;
  Mutex mutex;
  ConnectionPtr current GUARDED_BY(mutex);
  // Broken connections whose handlers have not all returned.
  std::vector<ConnectionPtr> retired GUARDED_BY(mutex);
};

}  // namespace quenlet
