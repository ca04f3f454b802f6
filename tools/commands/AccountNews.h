#pragma once

#include <string>
#include <vector>

#include "tools/commands/Session.h"
#include "tools/owner/UserAccounts.h"

namespace quenlet {

// What the agent has yet to hear of accounts, by words that change them. Use it under the store's
// lock: mark() before the store is written, tell() after. News of a word that is killed in between
// is what the next one finds left. One thread.
class AccountNews final {
 public:
  // How the agent was told. A value type.
  struct Notice final {
    // `left`: no agent runs, and the next one is made to read all accounts.
    enum class Outcome { told, left, failed };

    Outcome outcome = Outcome::told;
    ErrorPtr error = nullptr;  // of one that failed
  };
  struct Change final {
    AccountPtr before;  // null for one that came
    AccountPtr after;   // null for one that went

    [[nodiscard]] const std::string& identifier() const {
      return (after ? after : before)->identifier;
    }
  };
  using Changes = std::vector<Change>;

  AccountNews(const Session& currentSession, UserAccounts& ownersAccounts)
      : session(currentSession), accounts(ownersAccounts) {}

  // What an earlier word did not come to tell: the marked accounts as the store has them now, or
  // all that it has when the mark is damaged, which is told the owner.
  [[nodiscard]] Result<Changes> left();
  // Durable when it returns null. In place of a former mark.
  [[nodiscard]] ErrorPtr mark(const Changes& changes) const;
  // Marks the change with what is left, and gives all of that to tell, the change first.
  [[nodiscard]] Result<Changes> markBesideLeft(Change change);
  // Removes the mark when the agent knows of all, or is going to read all accounts. The notice is
  // the one that failed or was left, if one was.
  [[nodiscard]] Notice tell(const Changes& changes) const;

 private:
  [[nodiscard]] Result<std::vector<std::string>> markedIdentifiers();
  [[nodiscard]] Notice tell(const Change& change) const;

  const Session& session;
  UserAccounts& accounts;
};

}  // namespace quenlet
