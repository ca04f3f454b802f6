#pragma once

#include <filesystem>

#include "quenlet/Result.h"

namespace quenlet {

// Where the user's programs keep their files. A value type.
struct UserPlaces final {
  std::filesystem::path home;
  std::filesystem::path configuration;  // XDG_CONFIG_HOME, by default ~/.config

  // As the environment of the process has it. An error when the user has no home.
  [[nodiscard]] static Result<UserPlaces> ofProcess();
};

}  // namespace quenlet
