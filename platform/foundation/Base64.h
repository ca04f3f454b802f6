#pragma once

#include <optional>
#include <string>
#include <string_view>

// Base64 with the standard alphabet and padding. Pure functions.
namespace quenlet {

// Appends the base64 form of `bytes`, padded, on one line.
void appendBase64(std::string& output, std::string_view bytes);

// The bytes of `text`. Blanks (space, tab, CR, LF) may stand anywhere; nothing for any other
// foreign character and for missing or misplaced padding.
[[nodiscard]] std::optional<std::string> decodedBase64(std::string_view text);

}  // namespace quenlet
