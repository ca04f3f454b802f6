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
  if (const ErrorPtr error = tellWhatIsMarked()) return session.failWith(error);
  // Under the lock: of two that run at once, the later one must not write the older state.
  auto present = OnlineAccounts::read(places.value());
  if (!present.ok()) {
    session.warn("the accounts of GNOME stay as they are");
    return session.failWith(present.error());
  }
  return present.value() ? bringInLineWith(*std::move(present).takeValue()) : leaveAsTheyAre();
}

ExitCode OnlineAccountsSync::withdraw() {
  const auto lock = accounts.store().lock();
  if (!lock.ok()) return session.failWith(lock.error());
  if (const ErrorPtr error = tellWhatIsMarked()) {
    session.warn("the accounts of GNOME stay until the agent can be told");
    return session.failWith(error);
  }
  return bringInLineWith({});
}

bool OnlineAccountsSync::isSwitchedOn(const ExtensionCatalog& manifests) {
  const auto manifest = manifests.read()->manifest(bundleIdentifier);
  return manifest.ok() && manifest.value()->extensionPoint == extensionPoint;
}

ExitCode OnlineAccountsSync::bringInLineWith(std::vector<Account> present) {
  if (const ErrorPtr error = collectChanges(std::move(present))) return session.failWith(error);
  const ExitCode code = apply();
  return hasConflict && code == ExitCode::done ? ExitCode::refused : code;
}

// What an earlier word did not come to tell.
ErrorPtr OnlineAccountsSync::tellWhatIsMarked() {
  const auto left = news.left();
  if (!left.ok()) return left.error();
  if (!left.value().empty()) {
    session.say("An earlier change was cut short; the agent is told of " +
                counted(left.value().size(), "account") + " again.");
  }
  return tell(left.value());
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

// With those whose files are damaged, as accounts of which no more is known than that they are
// GNOME's.
Result<std::vector<AccountPtr>> OnlineAccountsSync::stored() {
  auto all = accounts.store().accounts();
  if (!all.ok()) return all;
  auto unreadable = accounts.store().damagedAccounts();
  if (!unreadable.ok()) return Result<std::vector<AccountPtr>>::failure(unreadable.error());
  damaged = std::move(unreadable).takeValue();
  std::vector<AccountPtr> list = std::move(all).takeValue();
  for (const std::string& identifier : damaged) {
    if (!OnlineAccounts::isIdentifier(identifier)) continue;
    list.push_back(std::make_shared<const Account>(OnlineAccounts::named(identifier)));
  }
  return Result<std::vector<AccountPtr>>::success(std::move(list));
}

bool OnlineAccountsSync::isDamaged(const std::string& identifier) const {
  return std::find(damaged.begin(), damaged.end(), identifier) != damaged.end();
}

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

ExitCode OnlineAccountsSync::apply() {
  if (const ErrorPtr error = news.mark(changes)) return session.failWith(error);
  for (const AccountNews::Change& change : changes) {
    const ErrorPtr error = write(change);
    if (!error) continue;
    session.warn("the accounts of GNOME are taken over in part; the next sync goes on");
    return session.failWith(error);
  }
  say();
  const ErrorPtr error = tell(changes);
  if (!error) return ExitCode::done;
  session.warn("the agent was not told of every change; the next sync tells it again");
  return session.failWith(error);
}

ErrorPtr OnlineAccountsSync::write(const AccountNews::Change& change) {
  const std::string& identifier = change.identifier();
  if (isDamaged(identifier)) {
    session.warn("the file of the account " + identifier +
                 " is damaged: a copy is kept, and it is " +
                 (change.after ? "written anew" : "removed"));
  }
  if (change.after) return accounts.store().save(*change.after);
  return isDamaged(identifier) ? accounts.store().removeDamaged(identifier)
                               : accounts.store().remove(identifier);
}

// Null also for an agent that reads all accounts later.
ErrorPtr OnlineAccountsSync::tell(const AccountNews::Changes& told) {
  const AccountNews::Notice notice = news.tell(told);
  if (notice.outcome == AccountNews::Notice::Outcome::told) return nullptr;
  if (notice.outcome == AccountNews::Notice::Outcome::left) {
    session.say("No agent runs; the next one reads them when it starts.");
    return nullptr;
  }
  if (!isNotEnabled(*notice.error)) return notice.error;
  session.say("The agent reads them when donations come on.");
  return nullptr;
}

void OnlineAccountsSync::say() const {
  if (changes.empty()) {
    session.say("The accounts of GNOME have not changed.");
    return;
  }
  const auto isNew = [](const AccountNews::Change& change) { return !change.before; };
  const auto isGone = [](const AccountNews::Change& change) { return !change.after; };
  const auto added = std::count_if(changes.begin(), changes.end(), isNew);
  const auto removed = std::count_if(changes.begin(), changes.end(), isGone);
  const auto changed = static_cast<std::ptrdiff_t>(changes.size()) - added - removed;
  session.say("Accounts of GNOME: " + std::to_string(added) + " added, " + std::to_string(changed) +
              " changed, " + std::to_string(removed) + " removed.");
}

}  // namespace quenlet
