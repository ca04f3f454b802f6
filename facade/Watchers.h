#pragma once

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "facade/CallerIdentity.h"
#include "facade/IdleEnd.h"
#include "quenlet/Client.h"

namespace quenlet {

// Who wants to be told that the card has changed. Use on the loop's thread; must outlive the
// client's handlers.
class Watchers final {
 public:
  using Tell = std::function<void(const std::string& uniqueName, const CallerIdentity& watcher)>;

  static constexpr std::size_t mostWatchers = 1024;

  Watchers(Client& client, IdleEnd& idleEnd, Tell tellOne)
      : agent(client), idle(idleEnd), tell(std::move(tellOne)) {}

  // False when there are too many already. Once is enough.
  [[nodiscard]] bool add(const std::string& uniqueName, const CallerIdentity& watcher);
  void remove(const std::string& uniqueName);

 private:
  void tellAll();

  Client& agent;
  IdleEnd& idle;
  const Tell tell;
  std::map<std::string, CallerIdentity> watchers;
  // While there are watchers.
  std::optional<Client::Call> following;
  IdleEnd::Hold hold;
};

}  // namespace quenlet
