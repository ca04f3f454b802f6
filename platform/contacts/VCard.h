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
  std::string uid = {};            // empty when the card has none
  std::string formattedName = {};  // FN, empty when the card has none
  Contact contact = {};            // N (else FN taken apart), NICKNAME, EMAIL, TEL, ADR, PHOTO
  // Entries passed over because they hold no usable value: a TEL without a plausible number, an
  // EMAIL without an address, a PHOTO that does not decode. Empty properties do not count.
  std::size_t skippedEntries = 0;
};

inline constexpr std::size_t maximumVCardSizeInBytes = std::size_t{32} << 20;

// Reads every card of `text`, vCard 3.0 or 4.0: folded lines, groups, parameters with quoted and
// multiple values, escapes, lists, base64 and data-URI photos, LF or CRLF, a byte order mark.
// Unknown properties, empty ones and photos that are elsewhere (http:) are passed over. Entries
// with PREF (or TYPE=pref) come first in their list, by ascending preference. An entry's label is
// the X-ABLabel of its group, else the lower-cased TYPE that says where ("home", "work",
// "cell"...), else empty. An FN that merely repeats another property, or is an e-mail address or a
// phone number, tells no name.
// A text that is no vCard, is over the size, is not valid UTF-8 or holds control characters is an
// error (ContactErrorDomain, invalidCard) whose sentence names the line and the offence and never
// quotes the content; another version than these is unsupportedVersion, and so are bare parameters
// and quoted-printable text, which only 2.1 has. Time and memory grow with the text's size.
[[nodiscard]] Result<std::vector<VCard>> parseVCards(std::string_view text);

// The contact as one vCard 4.0 with CRLF line ends, folded at 75 bytes, which parseVCards reads
// back equal, except for blanks at the ends of a text, a "mailto:" or "tel:" before an entry, and
// what no card can hold (text that is not UTF-8, control characters other than tab and line end; CR
// and CRLF become LF).
// Store info is not written.
[[nodiscard]] std::string writeVCard(const Contact& contact);

}  // namespace quenlet
