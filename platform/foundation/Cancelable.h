#pragma once

#include <functional>
#include <memory>
#include <utility>

#include "platform/foundation/Mutex.h"

namespace quenlet {

// Something under way that can be called off: a delayed block, a subscription, a registration.
// Thread-safe. Dropping the last reference does not cancel.
class Cancelable {
 public:
  virtual ~Cancelable() = default;
  // What has not started by then never starts; what has finished is not affected. A second
  // call has no effect.
  virtual void cancel() = 0;
};

// A Cancelable that runs one block on the first cancel() and forgets it. The block runs on the
// cancelling thread, with no lock held.
class CancelBlock final : public Cancelable {
 public:
  explicit CancelBlock(std::function<void()> onCancel) : block(std::move(onCancel)) {}

  void cancel() override EXCLUDES(mutex) {
    std::function<void()> taken;
    {
      MutexLock lock(mutex);
      taken.swap(block);
    }
    if (taken) taken();
  }

 private:
  Mutex mutex;
  std::function<void()> block GUARDED_BY(mutex);
};

}  // namespace quenlet
