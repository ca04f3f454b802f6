#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "model/DonationValue.h"
#include "platform/contacts/Contact.h"

namespace quenlet {

// Turns a list of donations into one contact: names component by component, the last one wins;
// addresses and numbers without duplicates, the first one stays, each with its origin; the last
// image. Lives for one rebuild; one thread at a time.
class ContactBuilder final {
 public:
  void addWithDonatedValue(DonationValuePtr value) { donations.push_back(std::move(value)); }
  // The contact of all values added so far, in the order in which they were added. Each call builds
  // anew. The contact shares the records.
  [[nodiscard]] Contact build() const;

  // The contact of the values at these places, without adding them to a builder. The contact shares
  // the list.
  [[nodiscard]] static Contact build(const std::shared_ptr<const DonationValues>& donations,
                                     const std::vector<std::uint32_t>& places);

 private:
  DonationValues donations;
};

}  // namespace quenlet
