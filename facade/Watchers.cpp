#include "facade/Watchers.h"

#include "facade/FacadeError.h"
#include "platform/scheduling/runGuarded.h"

namespace quenlet {

void Watchers::add(const std::string& uniqueName, const CallerIdentity& watcher, Reply reply) {
  // Another process has the name soon, and this one's signals would end with it.
  if (hasEnded) return reply(makeFacadeError(NoAgentError, "this process ends; call again"));
  if (watchers.size() + waiting.size() >= mostWatchers && !watchers.contains(uniqueName)) {
    return reply(makeFacadeError(BusyError, "too many programs watch the card"));
  }
  if (hasCard) {
    watchers.insert_or_assign(uniqueName, watcher);
    return reply(nullptr);
  }
  // Before the first card is there, a change could not be told from it.
  waiting.push_back({uniqueName, watcher, std::move(reply)});
  if (!isFollowing) begin();
}

void Watchers::begin() {
  isFollowing = true;
  try {
    hold = idle.hold();
    auto begun = follow([this](const Result<Card>& card) { hear(card); });
    // It may have failed at once.
    if (isFollowing) stop = std::move(begun);
  } catch (...) {
    hasCard = false;
    hear(Result<Card>::failure(makeFacadeError(FailedError, "the card cannot be followed")));
    throw;
  }
}

void Watchers::hear(const Result<Card>& card) {
  if (hasCard) return noteChange();
  const bool isFollowed = card.ok() || facadeErrorName(*card.error()) == DonationsDisabledError;
  const std::vector<Waiting> answered = std::exchange(waiting, {});
  hasCard = isFollowed;
  if (!isFollowed) stopFollowing();
  for (const Waiting& one : answered) {
    if (isFollowed) watchers.insert_or_assign(one.uniqueName, one.watcher);
    one.reply(isFollowed ? nullptr : card.error());
  }
}

void Watchers::remove(const std::string& uniqueName) {
  std::erase_if(waiting, [&](const Waiting& one) { return one.uniqueName == uniqueName; });
  watchers.erase(uniqueName);
  if (waiting.empty() && watchers.empty()) stopFollowing();
}

void Watchers::end() {
  hasEnded = true;
  watchers.clear();
  const std::vector<Waiting> refused = std::exchange(waiting, {});
  stopFollowing();
  for (const Waiting& one : refused) add(one.uniqueName, one.watcher, one.reply);
}

void Watchers::stopFollowing() {
  if (const auto stopping = std::exchange(stop, nullptr)) stopping();
  isFollowing = false;
  hasCard = false;
  hold = nullptr;
}

void Watchers::noteChange() {
  hasNews = true;
  if (round.expired()) beginRound();
}

void Watchers::beginRound() {
  hasNews = false;
  // Each app once, each program of the host by itself: that is looked at by its connection.
  std::map<std::string, std::vector<std::string>> groups;
  for (const auto& [uniqueName, watcher] : watchers) {
    groups[watcher.app.value_or(uniqueName)].push_back(uniqueName);
  }
  // Also when a look is dropped without an outcome, the round ends.
  const Round begun(nullptr, [weak = std::weak_ptr(self)](void*) {
    const auto alive = weak.lock();
    if (alive && (*alive)->hasNews) runGuarded([&] { (*alive)->beginRound(); });
  });
  round = begun;
  for (const auto& group : groups) {
    const std::vector<std::string>& names = group.second;
    const auto watcher = watchers.find(names.front());
    // One that was told may have made it go.
    if (watcher == watchers.end()) continue;
    look(names.front(), CallerIdentity(watcher->second),
         [weak = std::weak_ptr(self), names, begun](const ErrorPtr& refusal) {
           if (const auto alive = weak.lock()) (*alive)->tellThose(names, refusal);
         });
  }
}

void Watchers::tellThose(const std::vector<std::string>& names, const ErrorPtr& refusal) {
  const bool isForbidden = refusal && facadeErrorName(*refusal) == NotPermittedError;
  for (const std::string& name : names) {
    if (!watchers.contains(name)) continue;
    if (isForbidden) {
      remove(name);
    } else {
      tell(name);
    }
  }
}

}  // namespace quenlet
