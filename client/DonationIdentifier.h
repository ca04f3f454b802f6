#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "platform/contacts/VCard.h"

namespace quenlet {

// Names the donations of one card, the same way each time: "<bundle>:<UID>:email:2". A card without
// UID is named by its file and its place there, counted from 1: "<bundle>:<file>:1:email:2".
//
// Entries go by their place among their kind and not by their content, so that an address that was
// edited takes the place of the former one, and nothing of the content is in the name. Within a
// part, "%", ":", blanks and control characters stand as "%" and two hexadecimal digits, so that
// parts cannot run into each other: the donations of two bundles never have the same name.
// Immutable.
class DonationIdentifier final {
 public:
  // `fileName` is that of the card's file.
  DonationIdentifier(std::string_view bundleIdentifier, const VCard& card,
                     std::string_view fileName);

  // Of what a card has once: "name", "image".
  [[nodiscard]] std::string ofProperty(const char* kind) const;
  // Of the entry that comes as the `position`th of its kind, counted from 1.
  [[nodiscard]] std::string ofEntry(const char* kind, std::size_t position) const;

 private:
  std::string cardPrefix;
};

}  // namespace quenlet
