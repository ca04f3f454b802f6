#pragma once

#include <vector>

#include "foreign/OnlineAccounts.h"
#include "tools/commands/AgentNotice.h"

namespace quenlet {

// "account sync": brings the accounts of GNOME's in the owner's account store in line with those
// that GNOME has, and touches no others.
//
// The store is written first, all of it, then the agent is told of each change. What it cannot be
// told of is put back, so that the next sync finds the change again. One thread.
class OnlineAccountsSync final {
 public:
  OnlineAccountsSync(Session& currentSession, UserAccounts& ownersAccounts)
      : session(currentSession), accounts(ownersAccounts) {}

  [[nodiscard]] ExitCode run();

 private:
  struct Change final {
    AccountPtr before;  // null for one that came
    AccountPtr after;   // null for one that went
  };

  [[nodiscard]] ExitCode leaveAsTheyAre();
  [[nodiscard]] ErrorPtr collectChanges(std::vector<Account> present);
  [[nodiscard]] ExitCode apply();
  [[nodiscard]] ErrorPtr write(const AccountPtr& former, const AccountPtr& latter);
  [[nodiscard]] ExitCode putBack(std::size_t first, const ErrorPtr& reason);
  [[nodiscard]] Result<std::vector<AccountPtr>> stored();
  void say() const;

  Session& session;
  UserAccounts& accounts;
  std::vector<Change> changes;
  bool hasConflict = false;
};

}  // namespace quenlet
