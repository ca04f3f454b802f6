#pragma once

#include <memory>

#include "platform/foundation/Mutex.h"

namespace quenlet {

// One object that a reader of an immutable object keeps with it, such as an encoded form, and that
// is destroyed with it. Not part of its value: a copy starts without. Thread-safe.
class Attachment final {
 public:
  struct Attached {
    virtual ~Attached() = default;
  };

  Attachment() = default;
  Attachment(const Attachment&) {}
  Attachment& operator=(const Attachment& other) {
    if (this == &other) return *this;
    MutexLock lock(mutex);
    attached = nullptr;
    return *this;
  }

  // The attached T, made at the first call. All callers must name the same T.
  template <typename T>
  [[nodiscard]] std::shared_ptr<T> get() const EXCLUDES(mutex) {
    MutexLock lock(mutex);
    if (!attached) attached = std::make_shared<T>();
    return std::dynamic_pointer_cast<T>(attached);
  }

  friend bool operator==(const Attachment&, const Attachment&) { return true; }

 private:
  mutable Mutex mutex;
  mutable std::shared_ptr<Attached> attached GUARDED_BY(mutex);
};

}  // namespace quenlet
