#pragma once

#include <optional>
#include <string>
#include <vector>

#include "model/DonationValue.h"
#include "platform/feedback/FeedbackEntries.h"
#include "tools/owner/DonationState.h"
#include "tools/owner/JournalEntry.h"

namespace quenlet {

// A value that was given for the owner's card and is not on the agent's list. A value type.
struct UnlistedValue final {
  DonationState state;
  // Why, as one plain sentence without a full stop; not made safe for a terminal.
  std::string because;
  // Without the bytes of an image. Nothing for an entry that the reader could not use.
  std::optional<Value> value = std::nullopt;
  // As it was given; null when that is not known.
  DonationValuePtr donation = nullptr;
  // The donor's; empty when that is not known.
  std::string bundleIdentifier = {};
};

// What is kept about values beside the agent's list, at one moment.
struct OwnerRecords final {
  std::vector<FeedbackDecision> decisions = {};
  std::vector<JournalEntry> journal = {};  // oldest first
  bool donationsEnabled = true;
  Date now = {};
};

// Decided values first, in their order, then what the journal knows of, latest donation first. A
// value that is back on the list, or was given again unchanged, is told of once or not at all. Time
// and memory are linear.
[[nodiscard]] std::vector<UnlistedValue> unlistedValues(const DonationValues& list,
                                                        const OwnerRecords& records);

}  // namespace quenlet
