#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "quenlet/Values.h"

// Pure functions on what mail programs write for a sender: "Ann Berg <ann@example.org>".
namespace quenlet {

// Whether each line of the text can be shown as it is, and the whole is no longer than people
// write.
[[nodiscard]] bool isPlainText(std::string_view text);

// The address that the owner gives to people: nothing for text without one address, for addresses
// that nobody reads ("noreply") and for those made for one purpose ("ann+shop@example.org").
[[nodiscard]] std::optional<std::string> personalAddress(std::string_view mailbox);

// The name in a mailbox, or in text that is only a name. Nothing unless it has both a given and a
// family name: a login name or a role would be taken for the owner's name.
[[nodiscard]] std::optional<Name> fullName(std::string_view mailbox);

// The mailboxes between commas, except for those in quotes, brackets or comments; without blanks
// around, and without empty ones.
[[nodiscard]] std::vector<std::string> splitMailboxes(std::string_view list);

}  // namespace quenlet
