#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "client/Pseudonyms.h"
#include "platform/contacts/VCard.h"

namespace quenlet {

// Makes stable identifiers for the donations of one card: "<bundle>:<UID>:email:2". A card without
// a UID is identified by its file and its place in it, counted from 1: "<bundle>:<file>:1:email:2".
//
// Entries are numbered by their place among their kind: an edited address replaces the former one.
// Nothing personal appears in an identifier, because agents log them: a pseudonym stands for the
// file, and for a UID that is not a UUID, since some programs make UIDs of addresses and numbers.
//
// Within a part, "%", ":", blanks and control characters are written as "%" and two hexadecimal
// digits. Parts thus cannot run into each other, and two bundles never have the same identifier.
// Immutable.
class DonationIdentifier final {
 public:
  // `file` is what identifies the card's file, such as its path.
  DonationIdentifier(std::string_view bundleIdentifier, const VCard& card, std::string_view file,
                     const Pseudonyms& pseudonyms);

  // For a property that a card has once: "name", "image".
  [[nodiscard]] std::string ofProperty(const char* kind) const;
  // For the `position`th entry of its kind, counted from 1.
  [[nodiscard]] std::string ofEntry(const char* kind, std::size_t position) const;

 private:
  std::string cardPrefix;
};

}  // namespace quenlet
