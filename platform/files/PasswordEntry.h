#pragma once

#include <filesystem>
#include <string>

#include "quenlet/Result.h"

namespace quenlet {

// What the system's password database says of the user of the process. A value type.
struct PasswordEntry final {
  std::string login;
  std::string remarks;  // the full name, and behind commas a room and telephone numbers
  std::filesystem::path home;

  // An error when the user has no entry.
  [[nodiscard]] static Result<PasswordEntry> ofProcess();
};

}  // namespace quenlet
