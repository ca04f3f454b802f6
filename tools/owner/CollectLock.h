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
  // In the runtime directory. While it is there, quenlet-collect-wanted.path starts a collect.
  static constexpr char word[] = "quenlet-collect-wanted";

  CollectLock() = delete;

  // Waits for others; `isWaiting` is called once when there are any. The lock is held until its
  // object is destroyed. An error when it takes longer than that, or when there is no home.
  [[nodiscard]] static Result<std::shared_ptr<LockFile>> take(
      const std::function<void()>& isWaiting);
  // For a collect that has waited in vain: the unit that started it has no other news of what there
  // is to look at. Null when the word is there.
  [[nodiscard]] static ErrorPtr leaveWord();
};

}  // namespace quenlet
