#include "platform/files/TrustedProgram.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <string>
#include <system_error>
#include <utility>

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
  std::filesystem::path soFar;
  struct stat status {};
  // From the top: once a directory is found in order, nobody but root and the user can put another
  // one in place of what is in it, so the next look passes through the same directories. Below a
  // chosen base that is so as far as those above it are in order, as they are the business of the
  // user who chose it. A part that has become a link since is refused as one.
  for (const std::filesystem::path& part : program) {
    soFar /= part;
    if (isBelowBase && isAbove(soFar, chosenBase)) continue;
    if (::lstat(soFar.c_str(), &status) != 0) return makePosixError(errno, "find the program");
    if (const char* reason = reasonAgainst(status)) {
      return makeError(PosixErrorDomain, EACCES, soFar.native() + ": " + reason);
    }
  }
  if (S_ISREG(status.st_mode)) return nullptr;
  return makeError(PosixErrorDomain, EINVAL, "the program is not a regular file");
}

}  // namespace quenlet
