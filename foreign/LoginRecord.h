#pragma once

#include <string>

#include "quenlet/Result.h"

namespace quenlet {

// What the system's user database says of the user of the process. A value type.
struct LoginRecord final {
  std::string login;
  std::string fullName;  // as typed when the user was made; perhaps empty, or no name of a person's

  [[nodiscard]] static Result<LoginRecord> ofProcess();
};

}  // namespace quenlet
