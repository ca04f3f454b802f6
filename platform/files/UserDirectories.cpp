#include "platform/files/UserDirectories.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <system_error>

#include "platform/files/PasswordEntry.h"

namespace quenlet {
namespace {

using std::filesystem::path;

std::optional<path> absolutePathInEnvironment(const char* variable) {
  const char* text = std::getenv(variable);
  if (text == nullptr || *text != '/') return std::nullopt;
  return path(text);
}

std::optional<path> existing(path directory) {
  std::error_code failure;
  if (!std::filesystem::exists(std::filesystem::symlink_status(directory, failure))) {
    return std::nullopt;
  }
  return directory;
}

Result<path> homeInPasswordDatabase() {
  const auto entry = PasswordEntry::ofProcess();
  if (!entry.ok()) return Result<path>::failure(entry.error());
  if (!entry.value().home.is_absolute()) {
    return Result<path>::failure(makePosixError(ENOENT, "find the home directory"));
  }
  return Result<path>::success(entry.value().home);
}

}  // namespace

Result<path> UserDirectories::homeDirectory() {
  if (auto home = absolutePathInEnvironment("HOME")) return Result<path>::success(*std::move(home));
  return homeInPasswordDatabase();
}

std::optional<path> UserDirectories::chosenConfigurationDirectory() {
  return absolutePathInEnvironment("XDG_CONFIG_HOME");
}

Result<path> UserDirectories::placeOfRuntimeDirectory(const path& login) {
  std::optional<path> directory = absolutePathInEnvironment("XDG_RUNTIME_DIR");
  if (!directory) directory = existing(login / std::to_string(::getuid()));
  if (!directory) {
    std::error_code failure;
    const path temporary = std::filesystem::temp_directory_path(failure);
    if (failure) {
      return Result<path>::failure(
          makePosixError(failure.value(), "find the directory for temporary files"));
    }
    directory = temporary / ("quenlet-" + std::to_string(::getuid()));
  }
  return Result<path>::success(*std::move(directory));
}

Result<path> UserDirectories::runtimeDirectory(const path& login) {
  Result<path> directory = placeOfRuntimeDirectory(login);
  if (!directory.ok()) return directory;
  if (ErrorPtr error = ensurePrivateDirectory(directory.value(), "the runtime directory")) {
    return Result<path>::failure(std::move(error));
  }
  return directory;
}

Result<path> UserDirectories::expandTilde(const std::string& path) {
  using Expanded = Result<std::filesystem::path>;
  if (path != "~" && !path.starts_with("~/")) return Expanded::success(path);
  Expanded home = homeDirectory();
  if (!home.ok() || path.size() <= 2) return home;
  return Expanded::success(home.value() / path.substr(2));
}

ErrorPtr UserDirectories::ensurePrivateDirectory(const path& directory, const std::string& name) {
  if (::mkdir(directory.c_str(), 0700) != 0 && errno != EEXIST) {
    return makePosixError(errno, "create " + name);
  }
  return examinePrivateDirectory(directory, name);
}

ErrorPtr UserDirectories::examinePrivateDirectory(const path& directory, const std::string& name) {
  // lstat: a link planted by somebody else must not lead into another directory of the user's.
  struct stat status {};
  if (::lstat(directory.c_str(), &status) != 0) return makePosixError(errno, "inspect " + name);
  if (!S_ISDIR(status.st_mode)) return makePosixError(ENOTDIR, "use " + name);
  if (status.st_uid != ::geteuid() || (status.st_mode & 0077) != 0) {
    return makePosixError(EACCES, "use " + name + ", which is not private to the user");
  }
  return nullptr;
}

}  // namespace quenlet
