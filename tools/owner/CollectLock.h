#pragma once

#include <functional>
#include <memory>

#include "platform/files/LockFile.h"
#include "quenlet/Result.h"

namespace quenlet {

// Held while donor extensions are asked and their answers taken over, and while one is switched
// off. So an older answer never follows a newer one, and none follows after its donor was switched
// off. One thread.
class CollectLock final {
 public:
  // Longer than some extensions that hang may take.
  static constexpr std::chrono::milliseconds patience = std::chrono::minutes(5);

  CollectLock() = delete;

  // Waits for others; `isWaiting` is called once when there are any. The lock is held until its
  // object is destroyed. An error when it takes longer than that, or when there is no home.
  [[nodiscard]] static Result<std::shared_ptr<LockFile>> take(
      const std::function<void()>& isWaiting);
};

}  // namespace quenlet
