#pragma once

#include <optional>
#include <string>
#include <string_view>

// The text forms of vCard values. Pure functions; time and memory grow with the argument's size.
namespace quenlet {

// Whether UTF-8 text holds what no card may: control characters (C0, DEL and C1) other than tab.
[[nodiscard]] bool holdsControlCharacter(std::string_view text);

// `\n`, `\,`, `\;` and `\\` undone; a backslash before anything else stays.
[[nodiscard]] std::string unescapedVCardText(std::string_view escaped);
// The reverse; CR and CRLF become one `\n`. Control characters other than tab are left out; text
// that is not UTF-8 is empty.
[[nodiscard]] std::string escapedVCardText(std::string_view text);

// Takes the text before the first unescaped `separator` off `rest`, which must be there, and the
// separator with it; what is taken is still escaped. After the last text `rest` is nothing.
[[nodiscard]] std::string_view takeVCardText(std::optional<std::string_view>& rest, char separator);

// What stands in quoted-printable text; what is malformed in it stays as it is.
[[nodiscard]] std::string decodedQuotedPrintable(std::string_view encoded);

// The bytes of a "data:" URI, base64 (with or without its padding) or percent-encoded; nothing when
// it is malformed.
[[nodiscard]] std::optional<std::string> decodedDataURI(std::string_view uri);

}  // namespace quenlet
