#pragma once

#include <sys/types.h>

#include <optional>
#include <string>
#include <string_view>

#include "quenlet/Result.h"

namespace quenlet {

// The identifier that the file which Flatpak puts into each sandbox has for the app. An error when
// it names none, as that of a runtime without an app.
[[nodiscard]] Result<std::string> appIdentifierIn(std::string_view flatpakInfo);

// The app of the sandbox that a process is in; nothing for a process on the host. An app's calls
// come from its bus proxy, which is in a sandbox with the same file. Any doubt is an error: a
// process that cannot be looked at is not taken for one on the host. The caller has pinned the
// process.
[[nodiscard]] Result<std::optional<std::string>> sandboxedAppOf(pid_t process);

}  // namespace quenlet
