#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "platform/contacts/Contact.h"
#include "platform/contacts/KeyDescriptor.h"
#include "platform/foundation/Either.h"

namespace quenlet {

// One card of a vCard text.
struct VCard final {
  std::string uid = {};            // empty when the card has none
  std::string formattedName = {};  // FN, empty when the card has none
  Contact contact = {};            // N (else FN taken apart), NICKNAME, EMAIL, TEL, ADR, PHOTO
  std::size_t place = 1;  // among the cards of its text, those that cannot be read included
  // Entries passed over because they hold no usable value: a TEL without a plausible number, an
  // EMAIL without an address, a PHOTO that does not decode, text of an unknown encoding, what is
  // larger than a value may be, entries beyond a thousand of a kind, lines that are no property.
  // Empty properties do not count.
  std::size_t skippedEntries = 0;
};

struct VCards final {
  std::vector<VCard> cards;
  // One for each card that cannot be read, or one when the text holds no card
  // (ContactErrorDomain). The sentence names the line on which the card begins and the offence and
  // never quotes the content.
  std::vector<ErrorPtr> failures;
};

inline constexpr std::size_t maximumVCardSizeInBytes = std::size_t{32} << 20;

// Reads every card of `text`, vCard 2.1, 3.0 or 4.0: folded lines, groups, parameters with and
// without names, quoted and multiple values, escapes, lists, quoted-printable text in any charset,
// base64 and data-URI photos; LF, CRLF or CR, UTF-8 or UTF-16. Syntax and encoding are checked only
// of the properties that are read. Unknown properties, empty ones, cards within a card and photos
// that are elsewhere (http:) are passed over. Entries with PREF (or TYPE=pref) come first in their
// list, by ascending preference. An entry's label is the X-ABLabel of its group, else the
// lower-cased TYPE that says where ("home", "work", "cell"...), else empty. An FN that is an e-mail
// address, a phone number or DERIVED tells no name.
// A card that has no END, is of another version (unsupportedVersion) or is no person's (notAPerson)
// cannot be read; others are. A text over the size is no card (invalidCard). Time and memory grow
// with the text's size.
[[nodiscard]] VCards parseVCards(std::string_view text);

// The first card of `text`; reading ends at its END. Of the lists and the image only those in
// `keys` are read.
[[nodiscard]] Result<VCard> parseFirstVCard(std::string_view text,
                                            const std::vector<KeyDescriptor>& keys);

// The contact as one vCard 4.0 with CRLF line ends, folded at 75 bytes, which parseVCards reads
// back equal, except for blanks at the ends of a text, a "mailto:" or "tel:" before an entry, what
// is no e-mail address or country code, and what no card can hold (text that is not UTF-8, control
// characters other than tab and line end; CR and CRLF become LF).
// Store info is not written.
[[nodiscard]] std::string writeVCard(const Contact& contact);

}  // namespace quenlet
