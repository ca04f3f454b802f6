#pragma once

#include <optional>
#include <string>
#include <string_view>

// Base64 with the standard alphabet and padding. Pure functions.
namespace quenlet {

// Appends the base64 form of `bytes`, padded, on one line.
void appendBase64(std::string& output, std::string_view bytes);

enum class Base64Padding { required, optional };

// The bytes of `text`. Blanks (space, tab, CR, LF) are allowed anywhere. Nothing for any other
// character outside the alphabet, for misplaced padding, or for missing padding that is required.
[[nodiscard]] std::optional<std::string> decodedBase64(
    std::string_view text, Base64Padding padding = Base64Padding::required);

}  // namespace quenlet
