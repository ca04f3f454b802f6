#pragma once

#include <string>

#include "tools/commands/AccountEdit.h"

namespace quenlet {

class UserAccounts;

// "account add", "change", "remove" and "list": write the account store and tell the agent about
// the change, as a program that keeps accounts would. Call addTo() once, then run at most one of
// them.
//
// The store is written first, and stays so even if the agent refuses. Concurrent programs wait for
// each other until the agent is told: it hears of changes in the order of the store.
class AccountWord final {
 public:
  void addTo(CLI::App& app, ChosenAction& chosen);

 private:
  [[nodiscard]] ExitCode add(Session& session, UserAccounts& accounts) const;
  [[nodiscard]] ExitCode change(Session& session, UserAccounts& accounts) const;
  [[nodiscard]] ExitCode remove(Session& session, UserAccounts& accounts) const;
  [[nodiscard]] ExitCode list(Session& session, UserAccounts& accounts) const;

  AccountEdit addition;
  AccountEdit alteration;
  std::string removedIdentifier;
  bool asJSON = false;
};

}  // namespace quenlet
