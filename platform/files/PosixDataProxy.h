#pragma once

#include <sys/types.h>

#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "platform/files/DataProxy.h"
#include "platform/files/DurableFileWriter.h"
#include "platform/files/FileOperations.h"
#include "platform/foundation/Cancelable.h"
#include "platform/foundation/Mutex.h"

namespace quenlet {

// Files of a POSIX file system. Thread-safe. Writes run one by one on a separate thread, those of a
// file in their order. While a file waits for that thread, newer content replaces the older: many
// changes in a row share one write, and at most one content per file waits in memory.
//
//   called while the writer is busy   writeContent(a, 1), writeContent(b, 2), writeContent(a, 3)
//   then waiting                      a = 3 (completes the futures of 1 and 3), b = 2
//
// Every write is atomic and durable, with WritingOptions::none, too. Error texts name the file, not
// its directory. The destructor waits for the remaining writes; do not run it on the writer thread,
// that is, in a completion block.
class PosixDataProxy final : public DataProxy {
 public:
  // What marks a directory as excluded from backups.
  static constexpr char backupTag[] = "CACHEDIR.TAG";
  static constexpr std::uintmax_t maximumFileSizeInBytes = std::uintmax_t{1} << 30;

  // Returns a token that delays the end of the process until it is cancelled.
  using TerminationHold = std::function<std::shared_ptr<Cancelable>()>;

  // `holdTermination`, which may be null, is called once for each write asked for. The token is
  // cancelled once the futures of the write are complete, or at once when the content joins a
  // waiting write. The writer thread starts with the first write.
  explicit PosixDataProxy(TerminationHold holdTermination = nullptr);
  // The same, over other system calls, which outlive the object.
  PosixDataProxy(TerminationHold holdTermination, FileOperations& fileOperations);
  ~PosixDataProxy() override;
  PosixDataProxy(const PosixDataProxy&) = delete;
  PosixDataProxy& operator=(const PosixDataProxy&) = delete;

  // Reads regular files only; anything else, such as a FIFO, is an error and never blocks. So is a
  // file over `maximumFileSizeInBytes` (EFBIG).
  [[nodiscard]] Future<std::string> dataWithContentsOfURL(
      const std::filesystem::path& url) override;
  [[nodiscard]] Future<bool> writeContent(FileContentPtr content,
                                          const std::filesystem::path& toURL,
                                          WritingOptions options) override EXCLUDES(mutex);
  // Makes a hard link, which takes no room on the disk and needs no permission to read. It keeps
  // the present content, because every write replaces the file by another one. Where links are
  // impossible, makes a copy. Numbers start at 1; content that the newest one already holds is not
  // kept again. Failure is reported on standard error; later writes of the file then try again
  // first, and fail with the same error until it works.
  bool keepDamagedFile(const std::filesystem::path& url) override EXCLUDES(mutex);
  void keepUnreadFile(const std::filesystem::path& url) override EXCLUDES(mutex);
  // Writes a CACHEDIR.TAG file, which backup programs honour.
  [[nodiscard]] ErrorPtr setExcludedFromBackups(const std::filesystem::path& directory) override
      EXCLUDES(mutex);

 private:
  struct Write {
    std::filesystem::path target;
    FileContentPtr content;
    std::vector<Promise<bool>> promises;
    std::shared_ptr<Cancelable> hold;
  };

  // The identity and time of change of a file; all zero when it does not exist.
  struct FileStamp {
    dev_t device = 0;
    ino_t number = 0;
    std::int64_t changedSeconds = 0;
    std::int64_t changedNanoseconds = 0;
    bool operator==(const FileStamp&) const = default;
  };

  [[nodiscard]] static FileStamp stampOf(const std::filesystem::path& file);
  [[nodiscard]] ErrorPtr keep(const std::filesystem::path& url);
  [[nodiscard]] ErrorPtr keepWhatIsUnkept(const std::filesystem::path& target) EXCLUDES(mutex);
  [[nodiscard]] int linkDamagedFile(const std::filesystem::path& url, std::uintmax_t number) const;
  [[nodiscard]] ErrorPtr copyDamagedFile(const std::filesystem::path& url, std::uintmax_t number);
  [[nodiscard]] Result<std::string> readFile(const std::filesystem::path& file) const;
  [[nodiscard]] Future<bool> enqueue(Write write) EXCLUDES(mutex);
  [[nodiscard]] ErrorPtr ensureThread() REQUIRES(mutex);
  void work() EXCLUDES(mutex);
  void perform(Write write) EXCLUDES(mutex);
  [[nodiscard]] ErrorPtr replace(const Write& write) EXCLUDES(mutex);

  const TerminationHold holdTermination;
  FileOperations& operations;
  DurableFileWriter writer;
  Mutex mutex;
  // Tags that were read and found good, as they were then.
  std::map<std::filesystem::path, FileStamp> goodTags GUARDED_BY(mutex);
  ConditionVariable changed;
  std::deque<Write> writes GUARDED_BY(mutex);  // at most one per target
  std::set<std::filesystem::path> unkeptFiles GUARDED_BY(mutex);
  bool ending GUARDED_BY(mutex) = false;
  std::thread thread;
};

}  // namespace quenlet
