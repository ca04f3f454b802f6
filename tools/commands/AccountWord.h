#pragma once

#include <string>

#include "tools/commands/AccountEdit.h"

namespace quenlet {

class UserAccounts;

// "account add", "change", "remove" and "list": write the account store and tell the agent what
// became of the account, as a program that keeps accounts would. Declared once, run once.
//
// The store comes first, and stays written whatever the agent says. Programs that do this at the
// same time wait for each other, so that the agent hears of changes in the store's order.
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
