#include "facade/Watchers.h"

#include "facade/FacadeError.h"

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
  hold = idle.hold();
  auto begun = follow([this](const Result<Card>& card) { hear(card); });
  // It may have failed at once.
  if (isFollowing) stop = std::move(begun);
}

void Watchers::hear(const Result<Card>& card) {
  if (hasCard) return tellAll();
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

void Watchers::tellAll() {
  const auto told = watchers;
  for (const auto& [uniqueName, watcher] : told) tell(uniqueName, watcher);
}

}  // namespace quenlet
