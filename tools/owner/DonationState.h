#pragma once

#include <cstdint>

namespace quenlet {

// What has become of a value that was given for the owner's card.
enum class DonationState : std::uint8_t {
  shown,

  // On the agent's list, but not on the card.

  // Its donor calls the owner by another name than the owner's own card.
  silenced,
  // A name, while the donated names differ and the owner keeps no card that decides.
  namesDisagree,
  ownCardHasIt,
  // Another donation gave the same value first.
  givenBefore,
  // A name or image in whose place the card shows a later one.
  replacedOnCard,
  // A name without any part.
  hasNothing,

  // Not on the agent's list.

  rejected,
  // A contacts program has noted that the owner took the value over.
  confirmed,
  expired,
  // Something else was given later under the same identifier, or its file was given without it.
  replaced,
  // An entry of a file that its reader could not use.
  skipped,
  donationsOff,
  // Taken back, or given only while it was rejected.
  absent,
};

// The word for a state in JSON, as the enumerator is called.
[[nodiscard]] const char* wordFor(DonationState state);
// The heading of a list of such values.
[[nodiscard]] const char* titleOf(DonationState state);
// What the owner can do about it, as a sentence without a full stop; empty where nothing needs
// doing or saying.
[[nodiscard]] const char* adviceFor(DonationState state);

}  // namespace quenlet
