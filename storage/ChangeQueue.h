#pragma once

#include <functional>
#include <memory>
#include <vector>

#include "platform/foundation/Mutex.h"
#include "storage/StoreChange.h"

namespace quenlet {

// Changes that one block of a scheduler will make.
using SubmittedChanges = std::vector<SubmittedChange>;

// Lets changes that are submitted in a row share one block: a thousand at once do not make a
// thousand cards and saves. A change joins those before it while their block still waits and
// nothing else has been submitted since, so that the order of all blocks stays. Thread-safe.
class ChangeQueue final {
 public:
  // Submits a block that will take() its argument. No submission may run its block at once, or come
  // back here.
  using Submit = std::function<void(const std::shared_ptr<SubmittedChanges>&)>;

  // Joins the changes of the last block, or has `submit` submit another.
  void add(SubmittedChange change, const Submit& submit) EXCLUDES(mutex);
  // The changes whose block runs now: nothing joins them any more.
  [[nodiscard]] SubmittedChanges take(const std::shared_ptr<SubmittedChanges>& changes)
      EXCLUDES(mutex);
  // Has `submit` submit something else: changes that are added afterwards come after it.
  void submitApart(const std::function<void()>& submit) EXCLUDES(mutex);

 private:
  Mutex mutex;
  // Those of the last block; null when none may join it.
  std::shared_ptr<SubmittedChanges> open GUARDED_BY(mutex);
};

}  // namespace quenlet
