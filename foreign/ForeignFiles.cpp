#include "foreign/ForeignFiles.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <system_error>
#include <utility>

#include "platform/foundation/FileDescriptor.h"
#include "platform/foundation/Text.h"

namespace quenlet {
namespace {

using Bytes = Result<std::optional<std::string>>;

Bytes refuse(int code, const char* sentence) {
  return Bytes::failure(makeError(PosixErrorDomain, code, sentence));
}

bool isAbsence(int code) { return code == ENOENT || code == ENOTDIR; }

}  // namespace

Bytes ForeignFiles::read(const std::filesystem::path& file) {
  // O_NONBLOCK: a pipe of that name must not hold up the reader.
  const FileDescriptor opened(
      ::open(file.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY));
  if (!opened.isOpen() && isAbsence(errno)) return Bytes::success(std::nullopt);
  if (!opened.isOpen() && errno == ELOOP) return refuse(ELOOP, "it is a link");
  struct stat status {};
  if (!opened.isOpen() || ::fstat(opened.get(), &status) != 0) {
    return Bytes::failure(makePosixError(errno, "open it"));
  }
  if (!S_ISREG(status.st_mode)) return refuse(EINVAL, "it is not a regular file");
  // One byte more is enough to see that it is too large.
  Result<std::string> bytes = readAtMost(
      mostBytes + 1, [&](char* room, std::size_t size) { return ::read(opened.get(), room, size); },
      "read it");
  if (!bytes.ok()) return Bytes::failure(bytes.error());
  if (bytes.value().size() > mostBytes) return refuse(EFBIG, "it is larger than 4 MiB");
  return Bytes::success(std::move(bytes).takeValue());
}

Bytes ForeignFiles::readLines(const std::filesystem::path& file) {
  Bytes bytes = read(file);
  if (!bytes.ok() || !bytes.value()) return bytes;
  if (bytes.value()->empty()) return refuse(EINVAL, "it is empty");
  ErrorPtr problem = problemOfLines(*bytes.value());
  return problem ? Bytes::failure(std::move(problem)) : std::move(bytes);
}

ErrorPtr ForeignFiles::problemOfLines(const std::string& text) {
  if (!text.empty() && !text.ends_with('\n')) {
    return makeError(PosixErrorDomain, EINVAL, "its last line is cut short");
  }
  if (!isValidUTF8(text)) return makeError(PosixErrorDomain, EINVAL, "it is not UTF-8");
  return nullptr;
}

Result<std::vector<std::string>> ForeignFiles::names(const std::filesystem::path& directory) {
  using Names = Result<std::vector<std::string>>;
  std::vector<std::string> found;
  std::error_code failure;
  std::filesystem::directory_iterator entry(directory, failure);
  for (; !failure && entry != std::filesystem::directory_iterator(); entry.increment(failure)) {
    if (found.size() == mostNames) {
      return Names::failure(makeError(PosixErrorDomain, E2BIG, "it holds too many files"));
    }
    found.push_back(entry->path().filename().native());
  }
  if (failure && !isAbsence(failure.value())) {
    return Names::failure(makePosixError(failure.value(), "list it"));
  }
  std::sort(found.begin(), found.end());
  return Names::success(std::move(found));
}

ErrorPtr ForeignFiles::locate(const std::string& place, const Error& error) {
  return makeError(error.domain(), error.code(), place + ": " + error.debugDescription());
}

}  // namespace quenlet
