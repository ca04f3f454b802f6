#pragma once

#include <filesystem>

#include "platform/foundation/Either.h"

namespace quenlet {

// The program at a path, with links followed, if nobody but root and the own user can put another
// one in its place: each directory from the root down to it, and the program itself, belongs to one
// of the two, and no group or others can write it. A directory that everybody can write is good
// enough when it is root's and sticky, as there nobody can touch what is others'. A program that
// takes on the rights of another user or group is refused.
//
// What lies above `chosenBase` is up to whoever chose that directory, and is not looked at for a
// program below it; the base itself is.
[[nodiscard]] Result<std::filesystem::path> trustedProgram(
    const std::filesystem::path& executable, const std::filesystem::path& chosenBase = {});

}  // namespace quenlet
