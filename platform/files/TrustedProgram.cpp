#include "platform/files/TrustedProgram.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <string>
#include <system_error>
#include <utility>

#include "platform/foundation/FileDescriptor.h"

namespace quenlet {
namespace {

constexpr mode_t writableByOthers = S_IWGRP | S_IWOTH;

// Why a directory or program cannot be trusted; null when it can.
const char* reasonAgainst(const struct stat& status) {
  if (status.st_uid != 0 && status.st_uid != ::geteuid()) return "it belongs to another user";
  const bool isDirectory = S_ISDIR(status.st_mode);
  const bool isShared = isDirectory && status.st_uid == 0 && (status.st_mode & S_ISVTX) != 0;
  if ((status.st_mode & writableByOthers) != 0 && !isShared) {
    return "its group or others can write it";
  }
  if (!isDirectory && !S_ISREG(status.st_mode)) return "it is not a regular file";
  if (!isDirectory && (status.st_mode & (S_ISUID | S_ISGID)) != 0) {
    return "it takes on the rights of its owner or group";
  }
  return nullptr;
}

// Both are absolute and in normal form.
bool isAbove(const std::filesystem::path& directory, const std::filesystem::path& path) {
  const auto [end, rest] =
      std::mismatch(directory.begin(), directory.end(), path.begin(), path.end());
  return end == directory.end() && rest != path.end();
}

}  // namespace

Result<std::filesystem::path> trustedProgram(const std::filesystem::path& executable,
                                             const std::filesystem::path& chosenBase) {
  using Program = Result<std::filesystem::path>;
  std::error_code failure;
  std::filesystem::path program = std::filesystem::canonical(executable, failure);
  if (failure) return Program::failure(makePosixError(failure.value(), "find the program"));
  if (ErrorPtr reason = whyUntrusted(program, chosenBase)) {
    return Program::failure(std::move(reason));
  }
  return Program::success(std::move(program));
}

ErrorPtr whyUntrusted(const std::filesystem::path& program,
                      const std::filesystem::path& chosenBase) {
  const bool isBelowBase = isAbove(chosenBase, program);
  FileDescriptor reached;
  std::filesystem::path soFar;
  struct stat status {};
  for (const std::filesystem::path& part : program) {
    soFar /= part;
    if (isBelowBase && isAbove(soFar, chosenBase)) continue;
    // Step by step from the descriptor above; the first one has the whole path and needs none. A
    // part that has become a link since is opened as that link, and refused.
    const std::filesystem::path& name = reached.isOpen() ? part : soFar;
    FileDescriptor next(::openat(reached.get(), name.c_str(), O_PATH | O_NOFOLLOW | O_CLOEXEC));
    if (!next.isOpen() || ::fstat(next.get(), &status) != 0) {
      return makePosixError(errno, "open the program");
    }
    if (const char* reason = reasonAgainst(status)) {
      return makeError(PosixErrorDomain, EACCES, soFar.native() + ": " + reason);
    }
    reached = std::move(next);
  }
  if (S_ISREG(status.st_mode)) return nullptr;
  return makeError(PosixErrorDomain, EINVAL, "the program is not a regular file");
}

}  // namespace quenlet
