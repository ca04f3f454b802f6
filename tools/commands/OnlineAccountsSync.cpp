#include "tools/commands/OnlineAccountsSync.h"

#include <algorithm>
#include <string>
#include <utility>

#include "tools/owner/Hints.h"
#include "tools/presentation/Wording.h"

namespace quenlet {
namespace {

// Those of them that GNOME's accounts are.
std::vector<AccountPtr> onlineAccountsAmong(const std::vector<AccountPtr>& accounts) {
  std::vector<AccountPtr> online;
  for (const AccountPtr& account : accounts) {
    if (OnlineAccounts::isOne(*account)) online.push_back(account);
  }
  return online;
}

template <typename List>
auto findByIdentifier(const List& list, const std::string& identifier) {
  return std::find_if(list.begin(), list.end(),
                      [&](const auto& each) { return each->identifier == identifier; });
}

}  // namespace

ExitCode OnlineAccountsSync::run() {
  const Result<UserPlaces> places = UserPlaces::ofProcess();
  if (!places.ok()) return session.failWith(places.error());
  const auto lock = accounts.store().lock();
  if (!lock.ok()) return session.failWith(lock.error());
  // Under the lock: of two that run at once, the later one must not write the older state.
  auto present = OnlineAccounts::read(places.value());
  if (!present.ok()) {
    session.warn("the accounts of GNOME stay as they are");
    return session.failWith(present.error());
  }
  if (!present.value()) return leaveAsTheyAre();
  if (const ErrorPtr error = collectChanges(*std::move(present).takeValue())) {
    return session.failWith(error);
  }
  const ExitCode code = apply();
  return hasConflict && code == ExitCode::done ? ExitCode::refused : code;
}

// Without GNOME's directory nobody can say that there are no accounts any more: another
// configuration directory may be in use.
ExitCode OnlineAccountsSync::leaveAsTheyAre() {
  const auto all = stored();
  if (!all.ok()) return session.failWith(all.error());
  const std::size_t count = onlineAccountsAmong(all.value()).size();
  if (count == 0) {
    session.say("GNOME keeps no accounts here.");
  } else {
    session.say("GNOME keeps no accounts here any more; " + counted(count, "account") + " of it " +
                (count == 1 ? "stays" : "stay") +
                " until \"quenlet account remove\", or until it does.");
  }
  return ExitCode::done;
}

Result<std::vector<AccountPtr>> OnlineAccountsSync::stored() { return accounts.store().accounts(); }

ErrorPtr OnlineAccountsSync::collectChanges(std::vector<Account> present) {
  const auto all = stored();
  if (!all.ok()) return all.error();
  std::vector<AccountPtr> kept;
  for (Account& account : present) {
    AccountPtr after = std::make_shared<const Account>(std::move(account));
    kept.push_back(after);
    const auto before = findByIdentifier(all.value(), after->identifier);
    if (before == all.value().end()) {
      changes.push_back({nullptr, std::move(after)});
    } else if (!OnlineAccounts::isOne(**before)) {
      session.warn("the account " + after->identifier + " is not one of GNOME's, and stays");
      hasConflict = true;
    } else if (**before != *after) {
      changes.push_back({*before, std::move(after)});
    }
  }
  for (const AccountPtr& before : onlineAccountsAmong(all.value())) {
    const bool isThere = findByIdentifier(kept, before->identifier) != kept.end();
    if (!isThere) changes.push_back({before, nullptr});
  }
  return nullptr;
}

ErrorPtr OnlineAccountsSync::write(const AccountPtr& former, const AccountPtr& latter) {
  return latter ? accounts.store().save(*latter) : accounts.store().remove(former->identifier);
}

ExitCode OnlineAccountsSync::apply() {
  for (std::size_t i = 0; i < changes.size(); ++i) {
    const ErrorPtr error = write(changes[i].before, changes[i].after);
    if (!error) continue;
    changes.resize(i);
    return putBack(0, error);
  }
  for (std::size_t i = 0; i < changes.size(); ++i) {
    const AgentNotice notice =
        AgentNotice::give(session, accounts, changes[i].before, changes[i].after);
    if (notice.outcome == AgentNotice::Outcome::failed && !isNotEnabled(*notice.error)) {
      return putBack(i, notice.error);
    }
    if (notice.outcome == AgentNotice::Outcome::told) continue;
    // Either way the agent reads all accounts anew, so that there is no need to go on.
    say();
    session.say(notice.error ? "The agent reads them when donations come on."
                             : "No agent runs; the next one reads them when it starts.");
    return ExitCode::done;
  }
  say();
  return ExitCode::done;
}

// From `first` on.
ExitCode OnlineAccountsSync::putBack(std::size_t first, const ErrorPtr& reason) {
  for (std::size_t i = changes.size(); i > first; --i) {
    const Change& change = changes[i - 1];
    if (const ErrorPtr error = write(change.after, change.before)) {
      session.warn("the account " + (change.after ? change.after : change.before)->identifier +
                   " could not be put back, and the agent does not know of its change");
      return session.failWith(error);
    }
  }
  if (changes.size() == first) return session.failWith(reason);
  session.warn("the agent was not told of " + counted(changes.size() - first, "change") +
               ", which the next sync finds again");
  return session.failWith(reason);
}

void OnlineAccountsSync::say() const {
  if (changes.empty()) {
    session.say("The accounts of GNOME have not changed.");
    return;
  }
  const auto isNew = [](const Change& change) { return !change.before; };
  const auto isGone = [](const Change& change) { return !change.after; };
  const auto added = std::count_if(changes.begin(), changes.end(), isNew);
  const auto removed = std::count_if(changes.begin(), changes.end(), isGone);
  const auto changed = static_cast<std::ptrdiff_t>(changes.size()) - added - removed;
  session.say("Accounts of GNOME: " + std::to_string(added) + " added, " + std::to_string(changed) +
              " changed, " + std::to_string(removed) + " removed.");
}

}  // namespace quenlet
