#pragma once

#include <cstddef>
#include <deque>
#include <vector>

#include "quenlet/Card.h"
#include "quenlet/Donation.h"
#include "quenlet/quenlet.h"

// What the handles of the C interface for values stand for.

struct quenlet_value final {
  quenlet::Donation donation;
  // Not the name of a card, which comes from several donations.
  bool hasOrigin = true;
};

struct quenlet_values final {
  // Values stay where they are when others are added.
  std::deque<quenlet_value> list;
};

namespace quenlet {

[[nodiscard]] quenlet_values valuesOf(Card card);
[[nodiscard]] quenlet_values valuesOf(std::vector<Donation> donations);
[[nodiscard]] std::vector<Donation> donationsOf(const quenlet_values& values);

}  // namespace quenlet
