#pragma once

#include <filesystem>

#include "quenlet/Result.h"

namespace quenlet {

// The program at a path, with links resolved, if only root and the process's user can put another
// one in its place: each directory from the root down, and the program itself, belongs to one of
// the two and is not writable for group or others. A directory of root's that everybody can write
// to will do if it is sticky, because nobody can touch the files of others there. Set-user-ID and
// set-group-ID programs are refused.
//
// For a program below `chosenBase`, the directories above that base are not checked: they are the
// business of the user who chose it. The base itself is checked.
[[nodiscard]] Result<std::filesystem::path> trustedProgram(
    const std::filesystem::path& executable, const std::filesystem::path& chosenBase = {});

// Why the program at `program`, an absolute path in which all links are resolved, is not trusted;
// null if it is.
[[nodiscard]] ErrorPtr whyUntrusted(const std::filesystem::path& program,
                                    const std::filesystem::path& chosenBase = {});

}  // namespace quenlet
