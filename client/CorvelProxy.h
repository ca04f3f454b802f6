#pragma once

#include <memory>
#include <string>
#include <vector>

#include "client/AgentConnection.h"
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
// identifiers with the bundle identifier. To get a reply as a value, see client/waitForReply.h.
//
// Thread-safe. Every operation calls its handler exactly once and never throws. Without a loop the
// operations wait: each returns once its handler has returned. With one they return at once, and
// handlers run on the loop; only synchronousDonatedMeCard() waits all the same.
//
// The agent's own errors are passed on unchanged. The proxy adds ServiceErrorDomain errors:
// noService when no agent runs; connectionBroken when it ended before its reply; timedOut when it
// did not reply within the time limit (it may or may not have performed the operation, which may be
// repeated); malformedMessage for an invalid reply.
class CorvelProxy final : public CorvelProtocol {
 public:
  // Waits. Connects to the user's agent.
  explicit CorvelProxy(Patience patience = ServiceClient::standardTimeLimit);
  // Shares a connection with others. Waits if `handlerLoop` is null.
  CorvelProxy(std::shared_ptr<AgentConnection> shared, std::shared_ptr<ClientLoop> handlerLoop);
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
  void call(const char* selector, std::string encodedArguments,
            ServiceClient::Completion completion);
  void callForError(const char* selector, std::string encodedArguments, ErrorReply reply);
  void callForSuccess(const char* selector, std::string encodedArguments, SuccessReply reply);

  const std::shared_ptr<AgentConnection> connection;
  const std::shared_ptr<ClientLoop> loop;
};

}  // namespace quenlet
