#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "platform/contacts/VCardProperty.h"

namespace quenlet {

enum class VCardSyntax {
  // 2.1: commas do not separate values, and text that is not UTF-8 is in the old Western encoding.
  old,
  // 3.0 and 4.0.
  current,
};

// The value of a property as UTF-8 text with the escapes of the current syntax; quoted-printable
// and CHARSET are decoded. Nothing when it is not text or holds control characters. The result may
// be a view into `buffer`, which takes a value that had to be changed.
[[nodiscard]] std::optional<std::string_view> vCardValueAsText(const VCardProperty& property,
                                                               VCardSyntax syntax,
                                                               std::string& buffer);

// If the first bytes of `text` say that it is UTF-16, the text in UTF-8; else nothing.
[[nodiscard]] std::optional<std::string> vCardsFromUTF16(std::string_view text);

}  // namespace quenlet
