#pragma once

#include <string>

namespace quenlet {

// A phone number on one of the device's SIM cards. A value type.
struct SIMCardItem final {
  // Stays the same for the same number on the same card.
  std::string identifier;
  // The text stored on the card, which need not be a valid number.
  std::string value;
  friend bool operator==(const SIMCardItem&, const SIMCardItem&) = default;
};

}  // namespace quenlet
