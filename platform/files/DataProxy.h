#pragma once

#include <filesystem>
#include <memory>
#include <string>
#include <utility>

#include "platform/files/FileContent.h"
#include "platform/foundation/Future.h"

namespace quenlet {

enum class WritingOptions : unsigned { none = 0, atomic = 1 };

// File access. Thread-safe.
class DataProxy {
 public:
  virtual ~DataProxy() = default;

  // All bytes of a file. Reads on the calling thread: the returned future is complete.
  [[nodiscard]] virtual Future<std::string> dataWithContentsOfURL(
      const std::filesystem::path& url) = 0;

  // Writes the whole content of a file. With WritingOptions::atomic, a reader, and the
  // next start after a crash or power failure, sees the old file or the new one, never a part.
  // Missing directories are created (0700); the file has mode 0600. The future succeeds with true
  // once the bytes are durable. On failure the old file is unchanged, unless only the last step,
  // making the replacement durable, failed. It completes on the implementation's writer thread, or
  // has failed at once when the system gives no such thread. The caller keeps this object
  // meanwhile.
  [[nodiscard]] virtual Future<bool> writeContent(FileContentPtr content,
                                                  const std::filesystem::path& toURL,
                                                  WritingOptions options) = 0;
  [[nodiscard]] Future<bool> writeData(std::string data, const std::filesystem::path& toURL,
                                       WritingOptions options) {
    return writeContent(std::make_shared<const TextContent>(std::move(data)), toURL, options);
  }

  // Keeps a copy of a damaged or unreadable file beside it, as "<name>.damaged-<n>", before it is
  // replaced. On the calling thread. False when that fails.
  virtual bool keepDamagedFile(const std::filesystem::path& url) = 0;

  // For a file that could not be read but may be sound: the next write first keeps it in the same
  // way, and fails if it cannot. Thread-safe; returns at once.
  virtual void keepUnreadFile(const std::filesystem::path& url) = 0;

  // Marks a directory as excluded from backups. On the calling thread.
  [[nodiscard]] virtual ErrorPtr setExcludedFromBackups(const std::filesystem::path& directory) = 0;
};

}  // namespace quenlet
