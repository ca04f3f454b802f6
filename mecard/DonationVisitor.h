#pragma once

#include <cstddef>
#include <memory>
#include <vector>

#include "model/DonationValue.h"
#include "platform/contacts/Contact.h"

namespace quenlet {

// Fills one contact from the donations that accept it, and shares their list. Lives for one build;
// one thread at a time.
//
// One set of keys finds duplicates among e-mail addresses, phone numbers and postal addresses
// alike. Only names are parsed: the contact's entries are made when they are read.
class DonationVisitor final : public DonationValueVisitor {
 public:
  // `donations` owns all that will be visited, `expectedVisits` at most.
  DonationVisitor(std::shared_ptr<const DonationValues> donations, std::size_t expectedVisits)
      : owner(std::move(donations)), visitedValues(expectedVisits) {}

  void visitNameComponents(const DonationValue& donation) override;
  void visitEmailAddress(const DonationValue& donation) override {
    visitEntry(donation, emailAddresses);
  }
  void visitPhoneNumber(const DonationValue& donation) override {
    visitEntry(donation, phoneNumbers);
  }
  void visitPostalAddress(const DonationValue& donation) override {
    visitEntry(donation, postalAddresses);
  }
  void visitImageData(const DonationValue& donation) override;

  [[nodiscard]] Contact takeContact() &&;

 private:
  using Entries = std::vector<const DonationValue*>;

  void visitEntry(const DonationValue& donation, Entries& entries);

  const std::shared_ptr<const DonationValues> owner;
  // The entries with a key that the card has so far, and where they stand.
  Entries visited;
  KeyIndex visitedValues;
  MutableContact contact;
  Entries emailAddresses;
  Entries phoneNumbers;
  Entries postalAddresses;
};

}  // namespace quenlet
