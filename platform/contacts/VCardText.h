#pragma once

#include <optional>
#include <string>
#include <string_view>

// The text forms of vCard values. Pure functions; time and memory grow with the argument's size.
namespace quenlet {

// Whether UTF-8 text holds control characters (C0, DEL, C1) other than tab, which no card may.
[[nodiscard]] bool holdsControlCharacter(std::string_view text);

// Decodes `\n`, `\,`, `\;` and `\\`; a backslash before anything else stays.
[[nodiscard]] std::string unescapedVCardText(std::string_view escaped);
// The reverse; CR and CRLF become one `\n`. Drops control characters other than tab. Empty for text
// that is not UTF-8.
[[nodiscard]] std::string escapedVCardText(std::string_view text);

// Takes the text up to the first unescaped `separator`, still escaped, off `rest`, and drops the
// separator. After the last text `rest` is nothing; it must not be nothing before.
[[nodiscard]] std::string_view takeVCardText(std::optional<std::string_view>& rest, char separator);

// Decodes quoted-printable text; malformed escapes stay as they are.
[[nodiscard]] std::string decodedQuotedPrintable(std::string_view encoded);

// The bytes of a "data:" URI, base64 (with or without its padding) or percent-encoded; nothing when
// it is malformed.
[[nodiscard]] std::optional<std::string> decodedDataURI(std::string_view uri);

}  // namespace quenlet
