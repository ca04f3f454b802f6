#include "tools/commands/AccountNews.h"

#include <cerrno>
#include <chrono>
#include <memory>
#include <utility>

#include "platform/foundation/PropertyListError.h"
#include "tools/owner/Hints.h"
#include "tools/owner/WaitingAgent.h"

namespace quenlet {
namespace {

// About ten seconds in all, enough for an agent to start or to end.
constexpr int mostAttempts = 100;
constexpr std::chrono::milliseconds pauseBetweenAttempts(100);

}  // namespace

Result<std::vector<std::string>> AccountNews::markedIdentifiers() {
  using Identifiers = Result<std::vector<std::string>>;
  Identifiers marked = accounts.untold().identifiers();
  if (marked.ok() || marked.error()->domain() != PropertyListErrorDomain) return marked;
  session.warn("the mark of an earlier change is damaged: the agent is told of all accounts");
  const auto all = accounts.store().accounts();
  if (!all.ok()) return Identifiers::failure(all.error());
  std::vector<std::string> identifiers;
  for (const AccountPtr& account : all.value()) identifiers.push_back(account->identifier);
  return Identifiers::success(std::move(identifiers));
}

// The identifier of the former state tells the agent which of its donations are meant.
Result<AccountNews::Changes> AccountNews::left() {
  Changes changes;
  const auto identifiers = markedIdentifiers();
  if (!identifiers.ok()) return Result<Changes>::failure(identifiers.error());
  for (const std::string& identifier : identifiers.value()) {
    const auto after = accounts.store().accountWithIdentifier(identifier);
    // It is a change of its own to mend or remove it.
    if (!after.ok() && PropertyListAccountStore::isDamage(*after.error())) continue;
    if (!after.ok() && !PropertyListAccountStore::isUnknown(*after.error())) {
      return Result<Changes>::failure(after.error());
    }
    changes.push_back({std::make_shared<const Account>(Account{.identifier = identifier}),
                       after.ok() ? after.value() : nullptr});
  }
  return Result<Changes>::success(std::move(changes));
}

ErrorPtr AccountNews::mark(const Changes& changes) const {
  if (changes.empty()) return nullptr;
  std::vector<std::string> identifiers;
  for (const Change& change : changes) identifiers.push_back(change.identifier());
  return accounts.untold().mark(identifiers);
}

Result<AccountNews::Changes> AccountNews::markBesideLeft(Change change) {
  Result<Changes> earlier = left();
  if (!earlier.ok()) return earlier;
  Changes all{std::move(change)};
  for (const Change& each : earlier.value()) {
    if (each.identifier() != all.front().identifier()) {
      all.push_back(each);
    } else {
      // The agent may have of it what the store had before.
      all.front().before = each.before;
    }
  }
  if (ErrorPtr error = mark(all)) return Result<Changes>::failure(std::move(error));
  return Result<Changes>::success(std::move(all));
}

//   agent answers              told, or failed with its refusal
//   no agent, the lock free    left
//   no agent, the lock held    one is starting or ending: tries again until it answers or is gone,
//                              for about ten seconds, then failed
//   no agent, another error    failed with that error
AccountNews::Notice AccountNews::tell(const Change& change) const {
  const WaitingAgent agent(session.agent);
  for (int attempt = 1;; ++attempt) {
    const ErrorPtr error = agent.changeAccount(change.before, change.after);
    if (!error) return {};
    const bool isRefusal = !isNoAgent(*error);
    const ErrorPtr obstacle = isRefusal ? nullptr : accounts.forgetWhatAgentHasRead();
    if (!isRefusal && !obstacle) return {Notice::Outcome::left};
    const bool agentRuns = obstacle && obstacle->code() == EWOULDBLOCK;
    if (isRefusal || !agentRuns || attempt == mostAttempts) {
      return {Notice::Outcome::failed, isRefusal || agentRuns ? error : obstacle};
    }
    session.pause(pauseBetweenAttempts);
  }
}

AccountNews::Notice AccountNews::tell(const Changes& changes) const {
  Notice notice;
  for (const Change& change : changes) {
    notice = tell(change);
    if (notice.outcome != Notice::Outcome::told) break;
  }
  // While donations are off it reads none, and all when they come on.
  if (notice.outcome == Notice::Outcome::failed && !isNotEnabled(*notice.error)) return notice;
  if (ErrorPtr error = accounts.untold().clear()) {
    return {Notice::Outcome::failed, std::move(error)};
  }
  return notice;
}

}  // namespace quenlet
