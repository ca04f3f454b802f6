#include "facade/Watchers.h"

namespace quenlet {

bool Watchers::add(const std::string& uniqueName, const CallerIdentity& watcher) {
  if (watchers.size() >= mostWatchers && !watchers.contains(uniqueName)) return false;
  watchers.insert_or_assign(uniqueName, watcher);
  if (following) return true;
  hold = idle.hold();
  // What comes first is the card as it is.
  following = agent.onCardChange([this, isFirst = true](const Result<Card>&) mutable {
    if (!isFirst) tellAll();
    isFirst = false;
  });
  return true;
}

void Watchers::remove(const std::string& uniqueName) {
  if (watchers.erase(uniqueName) == 0 || !watchers.empty()) return;
  following->cancel();
  following.reset();
  hold = nullptr;
}

void Watchers::tellAll() {
  const auto told = watchers;
  for (const auto& [uniqueName, watcher] : told) tell(uniqueName, watcher);
}

}  // namespace quenlet
