#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "platform/contacts/Contact.h"
#include "platform/contacts/KeyDescriptor.h"
#include "quenlet/Result.h"

namespace quenlet {

// An entry of a card that was skipped, without its value.
struct SkippedEntry final {
  std::string property = {};  // its name, as in "TEL"; empty for a line that is not a property
  std::size_t line = 0;       // counted from 1 in the whole text

  friend bool operator==(const SkippedEntry&, const SkippedEntry&) = default;
};

// One card of a vCard text.
struct VCard final {
  std::string uid = {};            // empty when the card has none
  std::string formattedName = {};  // FN, empty when the card has none
  std::string kind = {};           // KIND in lower case, empty when the card has none
  Contact contact = {};            // N (else FN, split), NICKNAME, EMAIL, TEL, ADR, PHOTO
  std::size_t place = 1;           // among all cards of its text, unreadable ones included
  // Entries skipped for want of a usable value: a TEL without a plausible number, an EMAIL without
  // an address, a PHOTO that does not decode, text in an unknown encoding, values that are too
  // large, entries beyond a thousand of a kind, lines that are not a property. Empty properties do
  // not count.
  std::size_t skippedEntries = 0;
  // Which ones; only the first `mostSkippedNamed` of the card, since there can be millions.
  std::vector<SkippedEntry> skipped = {};
  static constexpr std::size_t mostSkippedNamed = 100;
};

struct VCards final {
  std::vector<VCard> cards;
  // One for each card that cannot be read, or one when the text holds no card (ContactErrorDomain).
  // The sentence says what is wrong and on which line the card begins, and never quotes the
  // content.
  std::vector<ErrorPtr> failures;
};

inline constexpr std::size_t maximumVCardSizeInBytes = std::size_t{32} << 20;

// Reads every card of `text`, vCard 2.1, 3.0 or 4.0: folded lines, groups, parameters with and
// without names, quoted and multiple values, escapes, lists, quoted-printable text in any charset,
// base64 and data-URI photos; LF, CRLF or CR, UTF-8 or UTF-16. Syntax and encoding are checked only
// in the properties that are read. Unknown properties, empty ones, cards within a card and photos
// that are only linked (http:) are skipped. Entries with PREF (or TYPE=pref) come first in their
// list, the most preferred one in front. An entry's label is the X-ABLabel of its group, else the
// lower-cased TYPE that says where ("home", "work", "cell"...), else empty. An FN that is an e-mail
// address, a phone number or DERIVED is not taken for a name.
//
// A card cannot be read when it has no END (invalidCard), has another version (unsupportedVersion),
// or is not of a person (notAPerson); the other cards are read all the same. A text over the
// maximum size is invalidCard. Time and memory grow with the size of the text.
[[nodiscard]] VCards parseVCards(std::string_view text);

// The first card of `text`; reading stops at its END. Lists and image are read only if `keys` names
// them.
[[nodiscard]] Result<VCard> parseFirstVCard(std::string_view text,
                                            const std::vector<KeyDescriptor>& keys);

// The contact as one vCard 4.0 with CRLF line ends, folded at 75 bytes, which parseVCards reads
// back equal, with these exceptions: blanks at the ends of a text, a "mailto:" or "tel:" before an
// entry, entries that are not an e-mail address or country code, and text that no card can hold
// (invalid UTF-8, control characters other than tab and line end; CR and CRLF become LF). Store
// info is not written.
[[nodiscard]] std::string writeVCard(const Contact& contact);

}  // namespace quenlet
