#pragma once

#include <optional>
#include <string>
#include <string_view>

// Text in other encodings than UTF-8. Pure functions; any thread.
namespace quenlet {

// The UTF-8 form of `bytes`, a text in `charset` ("ISO-8859-15", "windows-1252", "UTF-16" with its
// mark of byte order). Bytes that are no text in it become U+FFFD. Nothing for an unknown charset
// and beyond 1 GiB.
[[nodiscard]] std::optional<std::string> utf8Text(std::string_view bytes,
                                                  const std::string& charset);

}  // namespace quenlet
