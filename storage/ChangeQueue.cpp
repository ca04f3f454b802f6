#include "storage/ChangeQueue.h"

#include <utility>

namespace quenlet {

void ChangeQueue::add(SubmittedChange change, const Submit& submit) {
  // Held while submitting, here and below: a change must not join a block that was submitted before
  // what its caller submitted last.
  MutexLock lock(mutex);
  if (open) return open->push_back(std::move(change));
  const auto changes = std::make_shared<SubmittedChanges>();
  changes->push_back(std::move(change));
  submit(changes);
  open = changes;
}

SubmittedChanges ChangeQueue::take(const std::shared_ptr<SubmittedChanges>& changes) {
  MutexLock lock(mutex);
  if (open == changes) open.reset();
  return std::move(*changes);
}

void ChangeQueue::submitApart(const std::function<void()>& submit) {
  MutexLock lock(mutex);
  open.reset();
  submit();
}

}  // namespace quenlet
