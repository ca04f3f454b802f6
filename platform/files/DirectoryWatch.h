#pragma once

#include <filesystem>
#include <functional>
#include <memory>
#include <string>

#include "platform/foundation/Cancelable.h"
#include "platform/scheduling/EventLoop.h"

namespace quenlet {

// Tells what changes in a directory: entries created, replaced, written and closed, moved or
// deleted, by any process. It does not look into subdirectories, nor behind links to files
// elsewhere, and does not see that a directory further up is moved away.
//
// The user's own directory is created (0700, with those above) when it is missing, at the start and
// again when it is deleted or moved away. Where that fails, it is tried again every few seconds and
// said once on standard error. Thread-safe; the loop outlives the watch.
class DirectoryWatch final {
 public:
  // The name of an entry that changed; empty when anything may have changed, as too much happened
  // at once or the directory is a new one.
  using Handler = std::function<void(const std::string& entryName)>;

  static constexpr double retrySeconds = 5.0;

  DirectoryWatch() = delete;

  // Watches from this call on, until the token is cancelled. `handler` runs on the loop's thread;
  // changes of one entry in quick succession can come as one call. Cancelled on the loop's thread,
  // it is not called any more; on another thread, a call may be under way. A watch that fails is
  // tried again after `retryAfterSeconds`.
  [[nodiscard]] static std::shared_ptr<Cancelable> watchDirectory(
      EventLoop& loop, std::filesystem::path directory, Handler handler,
      double retryAfterSeconds = retrySeconds);
  // The same for a directory that is not ours to create: while it is missing, the nearest directory
  // above it is watched until it appears, which is a change of anything, as its loss is.
  [[nodiscard]] static std::shared_ptr<Cancelable> watchForeignDirectory(
      EventLoop& loop, std::filesystem::path directory, Handler handler);
};

}  // namespace quenlet
