#pragma once

#include <string>

namespace quenlet {

// One phone number of the device's SIM cards, as the card has it. A value type.
struct SIMCardItem final {
  // The same for the same number on the same card, whenever it is read.
  std::string identifier;
  // The number as text, which need not be one.
  std::string value;
  friend bool operator==(const SIMCardItem&, const SIMCardItem&) = default;
};

}  // namespace quenlet
