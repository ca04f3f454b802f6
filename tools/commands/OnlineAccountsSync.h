#pragma once

#include <string>
#include <vector>

#include "foreign/OnlineAccounts.h"
#include "platform/extensions/ExtensionCatalog.h"
#include "tools/commands/AccountNews.h"

namespace quenlet {

// "account sync": brings the accounts of GNOME's in the owner's account store in line with those
// that GNOME has, and touches no others.
//
// What changes is marked first, durably, then the store is written, all of it, then the agent is
// told of each change, and the mark goes. A sync that finds a mark was preceded by one that did not
// come to its end: it tells the agent of all that is marked. One thread.
//
// "collect" does so, too, while the owner has it switched on: as with a donor extension, by a
// manifest, of an extension point of its own.
class OnlineAccountsSync final {
 public:
  static constexpr char bundleIdentifier[] = "org.quenlet.sources.gnome-accounts";
  static constexpr char extensionPoint[] = "ovaro.quenlet.account-source";

  [[nodiscard]] static bool isSwitchedOn(const ExtensionCatalog& manifests);

  OnlineAccountsSync(Session& currentSession, UserAccounts& ownersAccounts)
      : session(currentSession), accounts(ownersAccounts), news(currentSession, ownersAccounts) {}

  [[nodiscard]] ExitCode run();
  // Removes all of them, as if GNOME had none.
  [[nodiscard]] ExitCode withdraw();

 private:
  [[nodiscard]] ErrorPtr tellWhatIsMarked();
  [[nodiscard]] ExitCode leaveAsTheyAre();
  [[nodiscard]] ExitCode bringInLineWith(std::vector<Account> present);
  [[nodiscard]] ErrorPtr collectChanges(std::vector<Account> present);
  [[nodiscard]] ExitCode apply();
  [[nodiscard]] ErrorPtr write(const AccountNews::Change& change);
  [[nodiscard]] ErrorPtr tell(const AccountNews::Changes& told);
  [[nodiscard]] Result<std::vector<AccountPtr>> stored();
  [[nodiscard]] bool isDamaged(const std::string& identifier) const;
  void say() const;

  Session& session;
  UserAccounts& accounts;
  AccountNews news;
  AccountNews::Changes changes;
  std::vector<std::string> damaged;  // the identifiers of files that hold no account
  bool hasConflict = false;
};

}  // namespace quenlet
