#pragma once

#include <functional>
#include <memory>
#include <utility>

#include "platform/foundation/Mutex.h"

namespace quenlet {

// A handler that can be taken back. Thread-safe; the handler is called and destroyed without the
// lock.
template <typename Outcome>
class HandlerSlot final {
 public:
  using Handler = std::function<void(Outcome)>;

  explicit HandlerSlot(Handler wanted)
      : handler(std::make_shared<const Handler>(std::move(wanted))) {}

  [[nodiscard]] bool isWanted() const EXCLUDES(mutex) {
    MutexLock lock(mutex);
    return handler != nullptr;
  }
  // Calls the handler unless it has been taken back.
  void deliver(Outcome outcome) const EXCLUDES(mutex) {
    if (const auto wanted = held()) (*wanted)(std::move(outcome));
  }
  // The same for a handler that is called once: it is gone then.
  void deliverLast(Outcome outcome) EXCLUDES(mutex) {
    if (const auto wanted = taken()) (*wanted)(std::move(outcome));
  }
  void cancel() EXCLUDES(mutex) { taken(); }

 private:
  using HandlerPtr = std::shared_ptr<const Handler>;

  [[nodiscard]] HandlerPtr held() const EXCLUDES(mutex) {
    MutexLock lock(mutex);
    return handler;
  }
  HandlerPtr taken() EXCLUDES(mutex) {
    MutexLock lock(mutex);
    return std::exchange(handler, nullptr);
  }

  mutable Mutex mutex;
  HandlerPtr handler GUARDED_BY(mutex);
};

}  // namespace quenlet
