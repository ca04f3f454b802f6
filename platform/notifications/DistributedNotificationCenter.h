#pragma once

#include <functional>
#include <memory>
#include <string>

#include "platform/foundation/Cancelable.h"

namespace quenlet {

inline constexpr char MeCardValuesDidChangeNotification[] =
    "ovaro.quenlet.me-card-values-did-change";
inline constexpr char MeCardChangeDistributedNotification[] =
    "PellanMeCardChangeDistributedNotification";

// Notifications by name, without content, between all processes of the user. Best effort: for a
// process that does not keep up, a post is merged with those that it has not read. Thread-safe.
class DistributedNotificationCenter {
 public:
  virtual ~DistributedNotificationCenter() = default;
  // Calls `callback` for each notification of that name, from any sender, this process included,
  // until the token is cancelled. Each implementation states the thread.
  [[nodiscard]] virtual std::shared_ptr<Cancelable> addObserver(const std::string& name,
                                                                std::function<void()> callback) = 0;
  // Does not wait for receivers.
  virtual void post(const std::string& name) = 0;
};

}  // namespace quenlet
