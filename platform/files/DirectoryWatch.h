#pragma once

#include <filesystem>
#include <functional>
#include <memory>
#include <string>

#include "platform/foundation/Cancelable.h"
#include "platform/scheduling/EventLoop.h"

namespace quenlet {

// Reports changes in a directory: entries created, replaced, written and closed, moved or deleted,
// by any process. Does not look into subdirectories or follow links to files elsewhere, and does
// not notice when a directory further up is moved.
//
// The user's own directory is created (0700, as are missing parents) at the start, and again when
// it is deleted or moved. When that fails, it is reported once on standard error and tried again
// every few seconds. Thread-safe; the loop outlives the watch.
class DirectoryWatch final {
 public:
  // The name of the entry that changed; empty when any entry may have changed, because events were
  // lost or the directory is a new one.
  using Handler = std::function<void(const std::string& entryName)>;

  static constexpr double retrySeconds = 5.0;

  DirectoryWatch() = delete;

  // Watches from this call on, until the token is cancelled. `handler` runs on the loop's thread;
  // several changes of one entry in quick succession can be one call. After cancel() on the loop's
  // thread it is not called again; after cancel() on another thread, a call may still be running. A
  // watch that fails is tried again after `retryAfterSeconds`.
  [[nodiscard]] static std::shared_ptr<Cancelable> watchDirectory(
      EventLoop& loop, std::filesystem::path directory, Handler handler,
      double retryAfterSeconds = retrySeconds);
  // The same for a directory that is not ours to create. While it is missing, the nearest existing
  // directory above it is watched. Its appearance and its loss are reported with an empty name.
  [[nodiscard]] static std::shared_ptr<Cancelable> watchForeignDirectory(
      EventLoop& loop, std::filesystem::path directory, Handler handler);
};

}  // namespace quenlet
