#include "platform/files/TrustedDirectory.h"

#include <dirent.h>
#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <memory>
#include <utility>

namespace quenlet {
namespace {

// Why a file or directory cannot be trusted; null when it can.
ErrorPtr mistrust(const struct stat& status) {
  const char* reason = nullptr;
  if (status.st_uid != 0 && status.st_uid != ::geteuid()) {
    reason = "it belongs to another user";
  } else if ((status.st_mode & (S_IWGRP | S_IWOTH)) != 0) {
    reason = "its group or others can write it";
  }
  return reason == nullptr ? nullptr : makeError(PosixErrorDomain, EACCES, reason);
}

ErrorPtr mistrustFile(const struct stat& status) {
  if (!S_ISREG(status.st_mode))
    return makeError(PosixErrorDomain, EINVAL, "it is not a regular file");
  return mistrust(status);
}

Result<std::string> refuse(ErrorPtr error) {
  return Result<std::string>::failure(std::move(error));
}

}  // namespace

TrustedDirectory::TrustedDirectory(std::filesystem::path path, FileDescriptor opened)
    : location(std::move(path)), descriptor(std::move(opened)) {}

Result<TrustedDirectory> TrustedDirectory::open(const std::filesystem::path& path) {
  return openIn(AT_FDCWD, path.native(), path);
}

Result<TrustedDirectory> TrustedDirectory::subdirectory(const std::string& name) const {
  return openIn(descriptor.get(), name, location / name);
}

Result<TrustedDirectory> TrustedDirectory::openIn(int parent, const std::string& name,
                                                  std::filesystem::path path) {
  using Opened = Result<TrustedDirectory>;
  FileDescriptor opened(::openat(parent, name.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
  struct stat status {};
  if (!opened.isOpen() || ::fstat(opened.get(), &status) != 0) {
    return Opened::failure(makePosixError(errno, "open"));
  }
  if (ErrorPtr error = mistrust(status)) return Opened::failure(std::move(error));
  return Opened::success(TrustedDirectory(std::move(path), std::move(opened)));
}

Result<std::vector<std::string>> TrustedDirectory::names() const {
  using Names = Result<std::vector<std::string>>;
  // Opened anew: a duplicate would share the position in the list.
  FileDescriptor listed(::openat(descriptor.get(), ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  const std::unique_ptr<DIR, int (*)(DIR*)> entries(::fdopendir(listed.get()), &::closedir);
  if (!entries) return Names::failure(makePosixError(errno, "list"));
  static_cast<void>(listed.release());  // the list closes it
  std::vector<std::string> found;
  errno = 0;
  while (const dirent* entry = ::readdir(entries.get())) found.emplace_back(entry->d_name);
  if (errno != 0) return Names::failure(makePosixError(errno, "list"));
  std::sort(found.begin(), found.end());
  return Names::success(std::move(found));
}

Result<std::string> TrustedDirectory::readFile(const std::string& name,
                                               std::size_t maximumSizeInBytes, Links links) const {
  // O_NONBLOCK: a FIFO of that name must not block the reader.
  int flags = O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY;
  if (links == Links::refused) flags |= O_NOFOLLOW;
  const FileDescriptor file(::openat(descriptor.get(), name.c_str(), flags));
  struct stat status {};
  if (!file.isOpen() && errno == ELOOP && links == Links::refused) {
    return refuse(makeError(PosixErrorDomain, ELOOP, "it is a link"));
  }
  if (!file.isOpen() || ::fstat(file.get(), &status) != 0) {
    return refuse(makePosixError(errno, "open"));
  }
  if (ErrorPtr error = mistrustFile(status)) return refuse(std::move(error));
  if (status.st_size > static_cast<off_t>(maximumSizeInBytes)) {
    return refuse(
        makeError(PosixErrorDomain, EFBIG,
                  "it is larger than " + std::to_string(maximumSizeInBytes >> 10) + " KiB"));
  }
  return readAtMost(
      static_cast<std::size_t>(status.st_size),
      [&](char* room, std::size_t size) { return ::read(file.get(), room, size); }, "read");
}

ErrorPtr TrustedDirectory::examineFile(const std::string& name) const {
  struct stat status {};
  if (::fstatat(descriptor.get(), name.c_str(), &status, 0) != 0) {
    return makePosixError(errno, "open");
  }
  return mistrustFile(status);
}

}  // namespace quenlet
