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

// Files of a POSIX file system. Thread-safe. Writes run one by one on a thread of its own. A file's
// writes take effect in their order, but while a file waits for the thread, newer bytes for it take
// the place of the older ones, whose future then completes with the newer write's outcome: many
// changes in a row share one write, and no more than one content a file waits in memory.
//
// Every write is atomic and durable, with WritingOptions::none too. Error texts name the file, not
// its directory. Waits for what is left to write when it goes; so it is not to be destroyed on its
// own thread, that is, in a completion block.
class PosixDataProxy final : public DataProxy {
 public:
  static constexpr std::uintmax_t maximumFileSizeInBytes = std::uintmax_t{1} << 30;

  // Gives a token that holds back the process's end until it is cancelled.
  using TerminationHold = std::function<std::shared_ptr<Cancelable>()>;

  // `holdTermination` (none for null) is called for each file that starts waiting, and its token
  // cancelled once the futures of that write are complete. Starts the writer thread.
  explicit PosixDataProxy(TerminationHold holdTermination = nullptr);
  // The same over other system calls; they outlive the object.
  PosixDataProxy(TerminationHold holdTermination, FileOperations& fileOperations);
  ~PosixDataProxy() override;
  PosixDataProxy(const PosixDataProxy&) = delete;
  PosixDataProxy& operator=(const PosixDataProxy&) = delete;

  // Only regular files are read: anything else is an error, even where reading it would wait. So is
  // a file above `maximumFileSizeInBytes` (EFBIG).
  [[nodiscard]] Future<std::string> dataWithContentsOfURL(
      const std::filesystem::path& url) override;
  [[nodiscard]] Future<bool> writeData(std::string data, const std::filesystem::path& toURL,
                                       WritingOptions options) override EXCLUDES(mutex);
  // By a hard link, which takes no room on the disk and needs no permission to read; every write
  // replaces the file by another one, so that the link keeps it as it is now. Where no link can be
  // made, by a copy. They are numbered from 1 on; what the newest one holds already is not kept
  // again. What cannot be kept is reported on standard error; until it could be, writes of the file
  // try that first and fail with the same error.
  bool keepDamagedFile(const std::filesystem::path& url) override EXCLUDES(mutex);
  void keepUnreadFile(const std::filesystem::path& url) override EXCLUDES(mutex);
  // By a CACHEDIR.TAG file, which backup programs honour.
  [[nodiscard]] ErrorPtr setExcludedFromBackups(const std::filesystem::path& directory) override
      EXCLUDES(mutex);

 private:
  struct Write {
    std::filesystem::path target;
    std::string data;
    std::vector<Promise<bool>> promises;
    std::shared_ptr<Cancelable> hold;
  };

  // A file as it was at one moment; all zero when it was not there.
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
  void work() EXCLUDES(mutex);
  void perform(Write write) EXCLUDES(mutex);

  const TerminationHold holdTermination;
  FileOperations& operations;
  DurableFileWriter writer;
  Mutex mutex;
  // The tags that exclude their directories from backups, as they were when they were read.
  std::map<std::filesystem::path, FileStamp> goodTags GUARDED_BY(mutex);
  ConditionVariable changed;
  std::deque<Write> writes GUARDED_BY(mutex);  // at most one a target
  std::set<std::filesystem::path> unkeptFiles GUARDED_BY(mutex);
  bool ending GUARDED_BY(mutex) = false;
  std::thread thread;
};

}  // namespace quenlet
