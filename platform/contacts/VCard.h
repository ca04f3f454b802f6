#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "platform/contacts/Contact.h"
#include "platform/foundation/Either.h"

namespace quenlet {

// One card of a vCard text.
struct VCard final {
  std::string uid;            // empty when the card has none
  std::string formattedName;  // FN, empty when the card has none
  Contact contact;            // N (else FN taken apart), NICKNAME, EMAIL, TEL, ADR, PHOTO
  // Entries passed over because they hold no usable value: a TEL without a plausible number, an
  // EMAIL without an address. Empty properties do not count.
  std::size_t skippedEntries = 0;
};

inline constexpr std::size_t maximumVCardSizeInBytes = std::size_t{32} << 20;

// Reads every card of `text`, vCard 3.0 or 4.0: folded lines, groups, parameters with quoted and
// multiple values, escapes, lists, base64 and data-URI photos, LF or CRLF, a byte order mark.
// Unknown properties are passed over. Entries with PREF (or TYPE=pref) come first in their list, by
// ascending preference; labels are the lower-cased TYPE that says where ("home", "work",
// "cell"...), else empty. A text that is no vCard of these versions, is over the size, or is not
// valid UTF-8 is an error (ContactErrorDomain) whose sentence names the line and the offence and
// never quotes the content. 2.1 is refused by name, so are its bare parameters.
[[nodiscard]] Result<std::vector<VCard>> parseVCards(std::string_view text);

// The contact as one vCard 4.0 with CRLF line ends, folded at 75 bytes.
[[nodiscard]] std::string writeVCard(const Contact& contact);

}  // namespace quenlet
