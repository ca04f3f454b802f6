#pragma once

#include "tools/commands/Session.h"
#include "tools/owner/UserAccounts.h"

namespace quenlet {

// How the agent was told that an account of the store came, changed or went. A value type.
//
//   agent answers              told, or failed with its refusal
//   no agent, the lock free    left: the next agent is made to read all accounts
//   no agent, the lock held    one is starting or ending: tries again until it answers or is gone,
//                              for about ten seconds, then failed
//   no agent, another error    failed with that error
struct AgentNotice final {
  enum class Outcome { told, left, failed };

  // Call it after the store is written. `oldAccount` is null for an added account, `newAccount` for
  // a removed one. Writes nothing to the session's streams.
  [[nodiscard]] static AgentNotice give(const Session& session, const UserAccounts& accounts,
                                        const AccountPtr& oldAccount, const AccountPtr& newAccount);

  Outcome outcome = Outcome::told;
  ErrorPtr error = nullptr;  // of one that failed
};

}  // namespace quenlet
