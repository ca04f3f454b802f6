#pragma once

#include <string>
#include <vector>

#include "quenlet/Error.h"

namespace quenlet {

// What the user can do about an error, one line each without the "hint: " in front; empty when the
// error says all. Reads the preference for an error that comes of it.
[[nodiscard]] std::vector<std::string> hintsFor(const Error& error);

}  // namespace quenlet
