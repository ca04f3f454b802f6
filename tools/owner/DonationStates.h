#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

#include "model/DonationValue.h"
#include "tools/owner/DonationState.h"
#include "tools/owner/OwnCard.h"

namespace quenlet {

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

[[nodiscard]] DonationValues donationsOf(const StatedDonations& stated);

// The states of the agent's whole list, in its order, found by the classes that make the card. Time
// and memory are linear.
[[nodiscard]] StatedDonations statesOf(const std::shared_ptr<const DonationValues>& donations,
                                       const OwnCard& ownCard);

}  // namespace quenlet
