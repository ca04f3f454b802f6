#pragma once

#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/contacts/Contact.h"
#include "platform/contacts/PersonNameComponents.h"
#include "platform/contacts/VCard.h"
#include "quenlet/Result.h"

namespace quenlet {

// The card that the owner keeps, "me.vcf", read once: with everything on it, and the two facts that
// the agent takes from it, found by the agent's own class. A value type.
struct OwnCard final {
  // Null when there is no card, or it cannot be read; the agent then takes it that there is none.
  ContactPtr contact = nullptr;
  // Given and family name only; absent without a card.
  std::optional<PersonNameComponents> name = std::nullopt;
  // In normal form, without duplicates, ascending.
  std::vector<std::string> emailAddresses = {};
  // What its reader could not use; the first of them, if there are many.
  std::vector<SkippedEntry> skipped = {};
  // Why the card cannot be read; null when it was read, or there is none.
  ErrorPtr fault = nullptr;

  // The calling user's. An error when the user has no home directory.
  [[nodiscard]] static Result<OwnCard> read();
  [[nodiscard]] static OwnCard readFrom(const std::filesystem::path& path);
};

}  // namespace quenlet
