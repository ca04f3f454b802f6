#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "model/DonationValue.h"
#include "platform/contacts/VCard.h"
#include "platform/foundation/PropertyList.h"
#include "quenlet/Date.h"

namespace quenlet {

// What one file gave in a donation.
struct DonatedFile final {
  std::string pseudonym = {};  // stands for its path, which is kept nowhere
  std::string bundleIdentifier = {};
  // As they were given, in the file's order; images without their bytes.
  DonationValues donated = {};
  // What its reader could not use.
  std::vector<SkippedEntry> skipped = {};
  // Whether every card could be read, so that what is missing is no longer given. Not kept.
  bool isWhole = true;

  // The bundle under which the file with this pseudonym donates, and no other, by default.
  [[nodiscard]] static std::string bundleOf(const std::string& pseudonym) {
    return "org.quenlet.file." + pseudonym;
  }
  [[nodiscard]] bool hasBundleToItself() const { return bundleIdentifier == bundleOf(pseudonym); }
};

// One donation of this program: what it gave, and what the agent held in its place before.
struct JournalEntry final {
  enum class Kept : std::uint8_t {
    all,
    allButFormerImages,  // `replaced` lacks its images
    // Neither `donated`, `replaced` nor `skipped`: too large.
    frame,
  };

  std::int64_t number = 0;  // ascending; the journal gives it
  Date when = {};
  std::vector<DonatedFile> files = {};
  // What the agent held before and this donation replaced or removed, from any donor.
  DonationValues replaced = {};
  // The identifiers of those in `donated` that the agent did not take: the owner rejected them.
  std::vector<std::string> leftOut = {};
  Kept kept = Kept::all;

  [[nodiscard]] PropertyListDictionary dictionaryRepresentation() const;
  // Nothing when `entries` is not what dictionaryRepresentation() gives.
  [[nodiscard]] static std::optional<JournalEntry> entryWithDictionary(
      const PropertyListDictionary& entries);
};

}  // namespace quenlet
