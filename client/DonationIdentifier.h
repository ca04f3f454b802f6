#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "platform/contacts/VCard.h"

namespace quenlet {

// Makes stable identifiers for the donations of one card: "<bundle>:<UID>:email:2". A card without
// a UID is identified by its file and its place in it, counted from 1: "<bundle>:<file>:1:email:2".
//
// Entries are numbered by their place among their kind: an edited address replaces the former one,
// and no content appears in an identifier. Within a part, "%", ":", blanks and control characters
// are written as "%" and two hexadecimal digits. Parts thus cannot run into each other, and two
// bundles never have the same identifier. Immutable.
class DonationIdentifier final {
 public:
  // `fileName` is the name of the card's file.
  DonationIdentifier(std::string_view bundleIdentifier, const VCard& card,
                     std::string_view fileName);

  // For a property that a card has once: "name", "image".
  [[nodiscard]] std::string ofProperty(const char* kind) const;
  // For the `position`th entry of its kind, counted from 1.
  [[nodiscard]] std::string ofEntry(const char* kind, std::size_t position) const;

 private:
  std::string cardPrefix;
};

}  // namespace quenlet
