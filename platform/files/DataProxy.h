#pragma once

#include <filesystem>
#include <string>

#include "platform/foundation/Future.h"

namespace quenlet {

enum class WritingOptions : unsigned { none = 0, atomic = 1 };

// File access. Thread-safe.
class DataProxy {
 public:
  virtual ~DataProxy() = default;

  // All bytes of a file. Read on the calling thread: the future is complete when it returns.
  [[nodiscard]] virtual Future<std::string> dataWithContentsOfURL(
      const std::filesystem::path& url) = 0;

  // Writes `data` as the whole content of a file. With WritingOptions::atomic a reader, and the
  // next start after a crash or power failure, sees the old file or the new one and never a part.
  // Missing directories are created (0700), the file has mode 0600. When the future
  // succeeds, the bytes are durable; when it fails, the old file is as it was. Completes on the
  // layer's writer thread with true.
  [[nodiscard]] virtual Future<bool> writeData(std::string data, const std::filesystem::path& toURL,
                                               WritingOptions options) = 0;

  // Keeps a damaged or unreadable file beside its name, as "<name>.damaged-<n>", before something
  // new takes its place. On the calling thread. False when it could not be kept.
  virtual bool keepDamagedFile(const std::filesystem::path& url) = 0;

  // Has the next write of a file that could not be read, and may be sound, keep it in that way
  // first, and fail when it cannot be kept. Thread-safe, at once.
  virtual void keepUnreadFile(const std::filesystem::path& url) = 0;

  // Marks a directory as excluded from backups. On the calling thread.
  [[nodiscard]] virtual ErrorPtr setExcludedFromBackups(const std::filesystem::path& directory) = 0;
};

}  // namespace quenlet
