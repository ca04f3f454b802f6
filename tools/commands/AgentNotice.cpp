#include "tools/commands/AgentNotice.h"

#include <cerrno>
#include <chrono>

#include "tools/owner/WaitingAgent.h"

namespace quenlet {
namespace {

// About ten seconds in all, enough for an agent to start or to end.
constexpr int mostAttempts = 100;
constexpr std::chrono::milliseconds pauseBetweenAttempts(100);

}  // namespace

AgentNotice AgentNotice::give(const Session& session, const UserAccounts& accounts,
                              const AccountPtr& oldAccount, const AccountPtr& newAccount) {
  const WaitingAgent agent(session.agent);
  for (int attempt = 1;; ++attempt) {
    const ErrorPtr error = agent.changeAccount(oldAccount, newAccount);
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
