#include "platform/files/PosixDataProxy.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <charconv>
#include <cstdint>
#include <new>
#include <string_view>
#include <system_error>
#include <utility>

#include "platform/files/DurableDirectory.h"
#include "platform/files/FileReading.h"
#include "platform/files/PosixFileOperations.h"
#include "platform/foundation/FileDescriptor.h"
#include "platform/foundation/StandardStreams.h"

namespace quenlet {
namespace {

using std::filesystem::path;

constexpr std::string_view cacheTagSignature = "Signature: 8a477f597d28d172789f06886806bc55";
constexpr std::string_view cacheTagExplanation =
    "\n# Backups leave this directory out. \"quenlet export\" writes what is kept here to a "
    "file.\n";

FileOperations& systemOperations() {
  static PosixFileOperations operations;
  return operations;
}

// O_NONBLOCK: opening a FIFO would wait for somebody to write to it.
int openToRead(FileOperations& operations, const path& file) {
  int descriptor = -1;
  do descriptor = operations.open(file, O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY, 0);
  while (descriptor < 0 && errno == EINTR);
  return descriptor;
}

path damagedCopy(const path& file, std::uintmax_t number) {
  path copy = file;
  copy += ".damaged-" + std::to_string(number);
  return copy;
}

// The number of the newest "<name>.damaged-<n>" beside `file`, or 0.
std::uintmax_t newestDamagedCopy(const path& file) {
  const std::string prefix = file.filename().string() + ".damaged-";
  std::uintmax_t newest = 0;
  std::error_code failure;
  std::filesystem::directory_iterator entries(DurableDirectory::of(file), failure);
  for (; !failure && entries != std::filesystem::directory_iterator(); entries.increment(failure)) {
    const std::string name = entries->path().filename().string();
    if (!name.starts_with(prefix)) continue;
    std::uintmax_t number = 0;
    const char* end = name.data() + name.size();
    const auto parsed = std::from_chars(name.data() + prefix.size(), end, number);
    if (parsed.ec == std::errc() && parsed.ptr == end) newest = std::max(newest, number);
  }
  return newest;
}

void report(const ErrorPtr& error) {
  StandardStreams::writeError("quenlet: " + error->description());
}

}  // namespace

PosixDataProxy::PosixDataProxy(TerminationHold holdTermination)
    : PosixDataProxy(std::move(holdTermination), systemOperations()) {}

PosixDataProxy::PosixDataProxy(TerminationHold hold, FileOperations& fileOperations)
    : holdTermination(std::move(hold)), operations(fileOperations), writer(fileOperations) {}

PosixDataProxy::~PosixDataProxy() {
  {
    MutexLock lock(mutex);
    ending = true;
    changed.notifyAll();
  }
  if (thread.joinable()) thread.join();
}

Future<std::string> PosixDataProxy::dataWithContentsOfURL(const path& url) {
  Result<std::string> content = readFile(url);
  if (!content.ok()) return Future<std::string>::futureWithError(content.error());
  return Future<std::string>::futureWithResult(std::move(content).takeValue());
}

Result<std::string> PosixDataProxy::readFile(const path& file) const try {
  using Content = Result<std::string>;
  const std::string action = "read " + file.filename().string();
  const auto failed = [&](int failure) {
    return Content::failure(makePosixError(failure, action));
  };
  const FileDescriptor descriptor(openToRead(operations, file));
  if (!descriptor.isOpen()) return failed(errno);
  struct stat status {};
  if (::fstat(descriptor.get(), &status) != 0) return failed(errno);
  if (!S_ISREG(status.st_mode)) return failed(S_ISDIR(status.st_mode) ? EISDIR : EINVAL);
  if (static_cast<std::uintmax_t>(status.st_size) > maximumFileSizeInBytes) return failed(EFBIG);
  Content content = readAtMost(
      maximumFileSizeInBytes + 1,
      [&](char* room, std::size_t size) { return operations.read(descriptor.get(), room, size); },
      action, static_cast<std::size_t>(status.st_size));
  if (content.ok() && content.value().size() > maximumFileSizeInBytes) return failed(EFBIG);
  return content;
} catch (const std::bad_alloc&) {
  // A file larger than the memory is not ours: an error, but no reason to end the process.
  return Result<std::string>::failure(makePosixError(ENOMEM, "read a file"));
}

Future<bool> PosixDataProxy::writeContent(FileContentPtr content, const path& toURL,
                                          WritingOptions) {
  // Called without the lock, so before it is known whether a write for the file is waiting already;
  // a surplus hold is cancelled.
  std::shared_ptr<Cancelable> hold = holdTermination ? holdTermination() : nullptr;
  Write write{toURL.lexically_normal(), std::move(content), {Promise<bool>()}, std::move(hold)};
  return enqueue(std::move(write));
}

Future<bool> PosixDataProxy::enqueue(Write write) {
  const Promise<bool> promise = write.promises.front();
  std::shared_ptr<Cancelable> surplus;
  ErrorPtr refusal;
  {
    MutexLock lock(mutex);
    refusal = ensureThread();
    const auto waiting = std::find_if(writes.begin(), writes.end(), [&](const Write& other) {
      return other.target == write.target;
    });
    if (refusal) {
      surplus = std::move(write.hold);
    } else if (waiting == writes.end()) {
      writes.push_back(std::move(write));
    } else {
      waiting->content.swap(write.content);
      waiting->promises.push_back(std::move(write.promises.front()));
      surplus = std::move(write.hold);
    }
  }
  // Without the lock, which the thread that wakes needs.
  changed.notifyOne();
  if (refusal) promise.fail(refusal);
  if (surplus) surplus->cancel();
  return promise.future();
}

ErrorPtr PosixDataProxy::ensureThread() try {
  if (!thread.joinable()) thread = std::thread([this] { work(); });
  return nullptr;
} catch (const std::system_error& refusal) {
  return makePosixError(refusal.code().value(), "start the thread that writes");
} catch (const std::bad_alloc&) {
  return makePosixError(ENOMEM, "start the thread that writes");
}

void PosixDataProxy::work() {
  while (true) {
    Write write;
    {
      MutexLock lock(mutex);
      while (writes.empty() && !ending) changed.wait(mutex);
      if (writes.empty()) return;
      write = std::move(writes.front());
      writes.pop_front();
    }
    perform(std::move(write));
  }
}

void PosixDataProxy::perform(Write write) {
  const ErrorPtr error = replace(write);
  // Completion blocks may run for long; the content need not stay that long.
  write.content.reset();
  for (const Promise<bool>& promise : write.promises) {
    if (error) {
      promise.fail(error);
    } else {
      promise.succeed(true);
    }
  }
  if (write.hold) write.hold->cancel();
}

ErrorPtr PosixDataProxy::replace(const Write& write) try {
  ErrorPtr error = keepWhatIsUnkept(write.target);
  return error ? error : writer.replace(write.target, *write.content);
} catch (const std::bad_alloc&) {
  // The content is put together here, and may find no memory: that ends the write alone.
  return makePosixError(ENOMEM, "write a file");
}

bool PosixDataProxy::keepDamagedFile(const path& url) {
  const ErrorPtr error = keep(url);
  if (error) report(error);
  MutexLock lock(mutex);
  if (error) {
    unkeptFiles.insert(url.lexically_normal());
  } else {
    unkeptFiles.erase(url.lexically_normal());
  }
  return !error;
}

void PosixDataProxy::keepUnreadFile(const path& url) {
  MutexLock lock(mutex);
  unkeptFiles.insert(url.lexically_normal());
}

// The file may be sound, unreadable only while the disk failed: overwriting it would lose it.
ErrorPtr PosixDataProxy::keepWhatIsUnkept(const path& target) {
  {
    MutexLock lock(mutex);
    if (!unkeptFiles.contains(target)) return nullptr;
  }
  ErrorPtr error = keep(target);
  // A file that is gone needs no keeping.
  if (error && !isMissingFile(*error)) return error;
  MutexLock lock(mutex);
  unkeptFiles.erase(target);
  return nullptr;
}

ErrorPtr PosixDataProxy::keep(const path& url) {
  const std::uintmax_t newest = newestDamagedCopy(url);
  std::error_code unknown;
  // The newest copy may be a link to this very file, from an attempt before this one.
  const bool isKept = std::filesystem::equivalent(url, damagedCopy(url, newest), unknown);
  if (!isKept && linkDamagedFile(url, newest + 1) != 0) return copyDamagedFile(url, newest);
  const int failure = DurableDirectory::synchronize(operations, DurableDirectory::of(url));
  return failure == 0 ? nullptr : makePosixError(failure, "keep " + url.filename().string());
}

// Links under the first free number from `number` on. 0 or an errno value.
int PosixDataProxy::linkDamagedFile(const path& url, std::uintmax_t number) const {
  while (operations.link(url, damagedCopy(url, number)) != 0) {
    if (errno != EEXIST) return errno;
    ++number;
  }
  return 0;
}

// Copies under the first free number after `number`, which is that of the newest copy.
ErrorPtr PosixDataProxy::copyDamagedFile(const path& url, std::uintmax_t number) {
  const Result<std::string> content = readFile(url);
  if (!content.ok()) return content.error();
  const Result<std::string> newest = readFile(damagedCopy(url, number));
  if (newest.ok() && newest.value() == content.value()) return nullptr;
  ErrorPtr error;
  do error = writer.create(damagedCopy(url, ++number), content.value());
  while (error && error->code() == EEXIST);
  return error;
}

PosixDataProxy::FileStamp PosixDataProxy::stampOf(const path& file) {
  struct stat status {};
  if (::stat(file.c_str(), &status) != 0) return {};
  return {status.st_dev, status.st_ino, status.st_ctim.tv_sec, status.st_ctim.tv_nsec};
}

ErrorPtr PosixDataProxy::setExcludedFromBackups(const path& directory) {
  const path tag = directory / backupTag;
  // Called after each save, so a tag that was good and has not changed is not read again.
  const FileStamp stamp = stampOf(tag);
  {
    MutexLock lock(mutex);
    const auto known = goodTags.find(tag);
    if (known != goodTags.end() && known->second == stamp && stamp != FileStamp()) return nullptr;
  }
  const Result<std::string> present = readFile(tag);
  if (present.ok() && present.value().starts_with(cacheTagSignature)) {
    MutexLock lock(mutex);
    goodTags[tag] = stamp;
    return nullptr;
  }
  return writer.replace(tag, std::string(cacheTagSignature) + std::string(cacheTagExplanation));
}

}  // namespace quenlet
