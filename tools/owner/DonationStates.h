#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

#include "model/DonationValue.h"
#include "tools/owner/OwnCard.h"

namespace quenlet {

// What has become of a donated value, for its owner.
enum class DonationState {
  shown,
  // Its donor calls the owner by another name than the owner's own card.
  silenced,
  // A name, while the donated names differ and the owner's card has none to decide.
  namesDisagree,
  ownCardHasIt,
  // Another donation gave the same value first.
  givenBefore,
  // A name or image in whose place the card shows a later one.
  replacedOnCard,
  // A name without any part.
  hasNothing,
};

// The word for a state in JSON: "shown", "silenced", ... as the enumerator is called.
[[nodiscard]] const char* wordFor(DonationState state);

// A donation of the agent's list with its state. A value type.
struct StatedDonation final {
  DonationValuePtr donation;
  // Its place in the list, from 1 on: the short number that the list shows.
  std::size_t number;
  DonationState state;
  // Why, as one plain sentence without a full stop; not made safe for a terminal. Empty for what is
  // shown.
  std::string because;
  // The donation that the sentence speaks of and its number; null and 0 for none.
  DonationValuePtr other;
  std::size_t otherNumber;

  [[nodiscard]] bool isShown() const { return state == DonationState::shown; }
};
using StatedDonations = std::vector<StatedDonation>;

// The states of the agent's whole list, in its order, found by the classes that make the card. Time
// and memory are linear.
[[nodiscard]] StatedDonations statesOf(const std::shared_ptr<const DonationValues>& donations,
                                       const OwnCard& ownCard);

}  // namespace quenlet
