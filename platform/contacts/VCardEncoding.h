#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "platform/contacts/VCardProperty.h"

namespace quenlet {

enum class VCardSyntax {
  // 2.1: commas part nothing, and what is no UTF-8 is of the old Western encoding.
  old,
  // 3.0 and 4.0.
  current,
};

// The value of a property as UTF-8 text with the escapes of the current syntax, quoted-printable
// and CHARSET undone; nothing when it is no text or holds control characters. What has to be
// changed for that is put into `buffer`, which the result may look into.
[[nodiscard]] std::optional<std::string_view> vCardValueAsText(const VCardProperty& property,
                                                               VCardSyntax syntax,
                                                               std::string& buffer);

// A text of cards in UTF-16, by its first bytes, as UTF-8; nothing for any other.
[[nodiscard]] std::optional<std::string> vCardsFromUTF16(std::string_view text);

}  // namespace quenlet
