#pragma once

#include "quenlet/Error.h"
#include "tools/owner/Advice.h"

namespace quenlet {

// What the user can do about an error, one line each without the "hint: " in front; empty when the
// error says all. Reads the preference for an error that comes of it.
[[nodiscard]] Advices hintsFor(const Error& error);
// Whether the agent refused because donations are off, or it has just started and does not know.
[[nodiscard]] bool isNotEnabled(const Error& error);

}  // namespace quenlet
