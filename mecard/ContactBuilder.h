#pragma once

#include <utility>

#include "model/DonationValue.h"
#include "platform/contacts/Contact.h"

namespace quenlet {

// Merges a list of donations into one contact. The last value of each name component wins; of equal
// addresses and numbers the first stays, with its origin; the last image wins. Lives for one
// rebuild; one thread at a time.
class ContactBuilder final {
 public:
  void addWithDonatedValue(DonationValuePtr value) { donations.push_back(std::move(value)); }
  // The contact of all values added so far, in the order in which they were added; built anew at
  // each call. The contact shares the records.
  [[nodiscard]] Contact build() const;

 private:
  DonationValues donations;
};

}  // namespace quenlet
