#pragma once

#include <optional>
#include <string>
#include <string_view>

// Text in encodings other than UTF-8. Pure functions; any thread.
namespace quenlet {

// The UTF-8 form of `bytes`, a text in `charset` ("ISO-8859-15", "windows-1252", "UTF-16" with a
// byte order mark). Bytes that are invalid in it become U+FFFD. Nothing for an unknown charset, and
// for more than 1 GiB.
[[nodiscard]] std::optional<std::string> utf8Text(std::string_view bytes,
                                                  const std::string& charset);

}  // namespace quenlet
