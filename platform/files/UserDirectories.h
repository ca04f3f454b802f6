#pragma once

#include <filesystem>
#include <optional>
#include <string>

#include "quenlet/Result.h"

namespace quenlet {

// Where the user's files are. Stateless: the environment is read at each call. Thread-safe as long
// as nobody changes the environment.
class UserDirectories final {
 public:
  UserDirectories() = delete;

  // HOME when it is an absolute path, else the entry of the process's user in the password
  // database. An error when there is neither.
  [[nodiscard]] static Result<std::filesystem::path> homeDirectory();

  // XDG_CONFIG_HOME when it is an absolute path. Without one it is `defaultConfiguration` below the
  // home directory.
  [[nodiscard]] static std::optional<std::filesystem::path> chosenConfigurationDirectory();
  static constexpr char defaultConfiguration[] = ".config";

  // XDG_RUNTIME_DIR when it is an absolute path, else <login>/<uid> if that is there, as in a shell
  // that did not get the session's environment, else "quenlet-<uid>" in the system's directory for
  // temporary files. The first and the last are created when missing. An error when it does not
  // belong to the user, or lets group or others in: anyone who can write there could pose as the
  // agent.
  [[nodiscard]] static Result<std::filesystem::path> runtimeDirectory(
      const std::filesystem::path& login = "/run/user");
  // The same place, neither examined nor created.
  [[nodiscard]] static Result<std::filesystem::path> placeOfRuntimeDirectory(
      const std::filesystem::path& login = "/run/user");

  // `path` with a leading "~" or "~/" replaced by the home directory; other paths as they are.
  [[nodiscard]] static Result<std::filesystem::path> expandTilde(const std::string& path);

  // Creates `directory` with mode 0700 unless it is there; its parent is not created. An error when
  // something other than a directory is there, or it belongs to another user, or lets group or
  // others in. The error's text calls the directory `name`.
  [[nodiscard]] static ErrorPtr ensurePrivateDirectory(const std::filesystem::path& directory,
                                                       const std::string& name);
  // The same error for a directory that is there; ENOENT for one that is not.
  [[nodiscard]] static ErrorPtr examinePrivateDirectory(const std::filesystem::path& directory,
                                                        const std::string& name);
};

}  // namespace quenlet
