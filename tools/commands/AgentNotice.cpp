#include "tools/commands/AgentNotice.h"

#include <cerrno>
#include <chrono>
#include <tuple>

#include "client/waitForReply.h"

namespace quenlet {
namespace {

// About ten seconds in all, enough for an agent to start or to end.
constexpr int mostAttempts = 100;
constexpr std::chrono::milliseconds pauseBetweenAttempts(100);

ErrorPtr askAgent(const Session& session, const AccountPtr& oldAccount,
                  const AccountPtr& newAccount) {
  const auto [error] = waitForReply<ErrorPtr>([&](ErrorReply reply) {
    session.agent.changeFromAccount(oldAccount, newAccount, std::move(reply));
  });
  return error;
}

}  // namespace

AgentNotice AgentNotice::give(const Session& session, const UserAccounts& accounts,
                              const AccountPtr& oldAccount, const AccountPtr& newAccount) {
  for (int attempt = 1;; ++attempt) {
    const ErrorPtr error = askAgent(session, oldAccount, newAccount);
    if (!error) return {};
    const bool isRefusal = !isNoAgent(*error);
    const ErrorPtr obstacle = isRefusal ? nullptr : accounts.catchUp().schedule();
    if (!isRefusal && !obstacle) return {Outcome::left};
    const bool agentRuns = obstacle && obstacle->code() == EWOULDBLOCK;
    if (isRefusal || !agentRuns || attempt == mostAttempts) {
      return {Outcome::failed, isRefusal || agentRuns ? error : obstacle};
    }
    session.pause(pauseBetweenAttempts);
  }
}

}  // namespace quenlet
