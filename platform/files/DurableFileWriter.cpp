#include "platform/files/DurableFileWriter.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <random>
#include <system_error>
#include <utility>

#include "platform/files/DurableDirectory.h"
#include "platform/foundation/FileDescriptor.h"
#include "quenlet/Result.h"

namespace quenlet {
namespace {

using std::filesystem::path;

constexpr std::size_t suffixLength = 16;
constexpr int creationFlags = O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC | O_NOFOLLOW;

constexpr std::string_view suffixMark = ".quenlet-";
constexpr std::size_t suffixSize = suffixMark.size() + suffixLength;

std::string temporaryPrefix(const path& target) {
  return "." + target.filename().string() + std::string(suffixMark);
}

path temporaryFor(const path& target) {
  std::random_device random;
  std::string suffix(suffixLength, '0');
  std::snprintf(suffix.data(), suffix.size() + 1, "%08x%08x", random(), random());
  return DurableDirectory::of(target) / (temporaryPrefix(target) + suffix);
}

// A newly created file, which is removed at the end unless keep() is called.
class NewFile final {
 public:
  NewFile(FileOperations& fileOperations, path file)
      : operations(fileOperations),
        name(std::move(file)),
        descriptor(operations.open(name, creationFlags, 0600)) {}
  ~NewFile() {
    if (created && !kept) ::unlink(name.c_str());
  }
  NewFile(const NewFile&) = delete;
  NewFile& operator=(const NewFile&) = delete;

  [[nodiscard]] bool isOpen() const { return created; }
  [[nodiscard]] int get() const { return descriptor.get(); }
  [[nodiscard]] const path& location() const { return name; }
  void keep() { kept = true; }

  // Locks the file until this object is destroyed. 0 or an errno value; EAGAIN when another process
  // has taken the file for a leftover since its creation: it holds the lock or has unlinked the
  // file. Goes on without the lock where the file system has none.
  [[nodiscard]] int claim() {
    struct stat status {};
    lock.reset(::fcntl(get(), F_DUPFD_CLOEXEC, 0));  // shares the lock, which then survives close()
    if (!lock.isOpen()) return errno;
    if (::flock(get(), LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK) return EAGAIN;
    if (::fstat(get(), &status) != 0) return errno;
    return status.st_nlink > 0 ? 0 : EAGAIN;
  }

  // After EINTR the descriptor is closed all the same. Any other error may be a failed write.
  [[nodiscard]] int close() {
    return operations.close(descriptor.release()) == 0 || errno == EINTR ? 0 : errno;
  }

 private:
  FileOperations& operations;
  const path name;
  FileDescriptor descriptor;
  const bool created = descriptor.isOpen();
  FileDescriptor lock;
  bool kept = false;
};

// A text that outlives it.
class BorrowedText final : public FileContent {
 public:
  explicit BorrowedText(std::string_view wholeText) : text(wholeText) {}
  void handTo(const Sink& sink) const override { sink(text); }

 private:
  const std::string_view text;
};

Result<path> resolved(const path& target) {
  std::error_code failure;
  if (!std::filesystem::is_symlink(target, failure)) return Result<path>::success(target);
  path real = std::filesystem::weakly_canonical(target, failure);
  if (!failure) return Result<path>::success(std::move(real));
  return Result<path>::failure(
      makePosixError(failure.value(), "resolve the link " + target.filename().string()));
}

// Removes temporaries in `directory` whose names begin with `prefix`. Those that cannot be listed
// or opened stay.
void removeUnlocked(const path& directory, const std::string& prefix) {
  std::error_code failure;
  std::filesystem::directory_iterator entries(directory, failure);
  for (; !failure && entries != std::filesystem::directory_iterator(); entries.increment(failure)) {
    const path& entry = entries->path();
    const std::string name = entry.filename().string();
    if (name.size() < suffixSize || !name.starts_with(prefix)) continue;
    if (name.compare(name.size() - suffixSize, suffixMark.size(), suffixMark) != 0) continue;
    const FileDescriptor leftover(
        ::open(entry.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK));
    // Unlinked while locked: a writer that has just created it then sees its link count at 0.
    if (leftover.isOpen() && ::flock(leftover.get(), LOCK_EX | LOCK_NB) == 0) {
      ::unlink(entry.c_str());
    }
  }
}

}  // namespace

ErrorPtr DurableFileWriter::replace(const path& target, std::string_view data) {
  return replace(target, BorrowedText(data));
}

ErrorPtr DurableFileWriter::replace(const path& target, const FileContent& content) {
  const Result<path> real = resolved(target);
  if (!real.ok()) return real.error();
  const std::string name = target.filename().string();
  if (const int failure =
          DurableDirectory::ensure(operations, DurableDirectory::of(real.value()))) {
    return makePosixError(failure, "create the directory of " + name);
  }
  removeLeftoversOnce(real.value());
  const int failure = replaceResolved(real.value(), content);
  return failure == 0 ? nullptr : makePosixError(failure, "write " + name);
}

int DurableFileWriter::replaceResolved(const path& target, const FileContent& content) {
  NewFile temporary(operations, temporaryFor(target));
  if (!temporary.isOpen()) return errno;
  const int claimed = temporary.claim();
  // Taken for a leftover: try again. That ends, as each process cleans up only once per target.
  if (claimed == EAGAIN) return replaceResolved(target, content);
  if (claimed != 0) return claimed;
  if (const int failure = fill(temporary.get(), content)) return failure;
  if (const int failure = temporary.close()) return failure;
  if (operations.rename(temporary.location(), target) != 0) return errno;
  temporary.keep();
  return DurableDirectory::synchronize(operations, DurableDirectory::of(target));
}

ErrorPtr DurableFileWriter::create(const path& file, std::string_view data) {
  const auto failed = [&](int failure) {
    return makePosixError(failure, "create " + file.filename().string());
  };
  NewFile created(operations, file);
  if (!created.isOpen()) return failed(errno);
  if (const int failure = fill(created.get(), BorrowedText(data))) return failed(failure);
  if (const int failure = created.close()) return failed(failure);
  created.keep();
  const int failure = DurableDirectory::synchronize(operations, DurableDirectory::of(file));
  return failure == 0 ? nullptr : failed(failure);
}

int DurableFileWriter::fill(int descriptor, const FileContent& content) {
  int failure = 0;
  content.handTo([&](std::string_view piece) {
    failure = writeAll(descriptor, piece);
    return failure == 0;
  });
  return failure == 0 ? synchronize(descriptor) : failure;
}

int DurableFileWriter::writeAll(int descriptor, std::string_view data) {
  while (!data.empty()) {
    const ssize_t written = operations.write(descriptor, data.data(), data.size());
    if (written > 0) {
      data.remove_prefix(static_cast<std::size_t>(written));
    } else if (written == 0) {
      return EIO;
    } else if (errno != EINTR) {
      return errno;
    }
  }
  return 0;
}

int DurableFileWriter::synchronize(int descriptor) {
  // No other error is retried: the kernel may have dropped the unwritten pages, and a second call
  // would succeed without them.
  while (operations.fsync(descriptor) != 0) {
    if (errno != EINTR) return errno;
  }
  return 0;
}

void DurableFileWriter::removeLeftovers(const path& directory) { removeUnlocked(directory, "."); }

void DurableFileWriter::removeLeftoversOnce(const path& target) {
  {
    MutexLock lock(mutex);
    if (!cleanedTargets.insert(target).second) return;
  }
  removeUnlocked(DurableDirectory::of(target), temporaryPrefix(target));
}

}  // namespace quenlet
