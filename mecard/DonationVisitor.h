#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "model/DonationValue.h"
#include "platform/contacts/Contact.h"

namespace quenlet {

// The keys of the entries that a card has so far: an open-addressed table of the places of their
// donations. A look-up touches at most one record, barring hash collisions.
class VisitedKeys final {
 public:
  explicit VisitedKeys(std::size_t expectedKeys);

  // Adds the key of the donation at `place`, which must have one; false when it was there already.
  [[nodiscard]] bool add(const DonationValues& donations, std::uint32_t place);

 private:
  struct Slot final {
    std::uint32_t hash = 0;
    std::uint32_t placeAndOne = 0;  // 0 for none
  };
  std::vector<Slot> slots;
};

// Fills one contact from donations, which it shares. Lives for one build; one thread at a time.
//
// One set of keys finds duplicates among e-mail addresses, phone numbers and postal addresses
// alike. Comparing allocates no text, since keys are the records' own; the contact's entries are
// made when they are read.
class DonationVisitor final {
 public:
  DonationVisitor(std::shared_ptr<const DonationValues> donations, std::size_t expectedVisits);

  // Visits the donation at `place`.
  void visit(std::uint32_t place);
  [[nodiscard]] Contact takeContact() &&;

 private:
  using Entries = std::vector<const DonationValue*>;

  void visitNameComponents(const DonationValue& donation);
  void visitEntry(std::uint32_t place, const DonationValue& donation, Entries& entries);

  std::shared_ptr<const DonationValues> visited;
  VisitedKeys visitedValues;
  MutableContact contact;
  Entries emailAddresses;
  Entries phoneNumbers;
  Entries postalAddresses;
};

}  // namespace quenlet
