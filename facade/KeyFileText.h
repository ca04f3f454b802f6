#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace quenlet {

// The value of a key in a group of a key file of the desktop's, without escapes. Nothing when it is
// not there, or there twice: it is not for the reader to choose.
[[nodiscard]] std::optional<std::string> keyFileText(std::string_view file, std::string_view group,
                                                     std::string_view key);

}  // namespace quenlet
