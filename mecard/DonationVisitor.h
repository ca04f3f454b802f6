#pragma once

#include <array>
#include <cstddef>
#include <memory>
#include <vector>

#include "mecard/CardReasons.h"
#include "model/DonationValue.h"
#include "platform/contacts/Contact.h"
#include "platform/foundation/KeyIndex.h"

namespace quenlet {

// Fills one contact from the donations that accept it, and shares their list. Lives for one build;
// one thread at a time.
//
// One set of keys finds duplicates among e-mail addresses, phone numbers and postal addresses
// alike. Only names that the card shows are parsed: the contact's entries are made when they are
// read.
class DonationVisitor final : public DonationValueVisitor {
 public:
  // `donations` owns all that will be visited, `expectedVisits` at most. Notes in `reasons`, unless
  // it is null, why values are not on the card.
  DonationVisitor(std::shared_ptr<const DonationValues> donations, std::size_t expectedVisits,
                  CardReasons* reasonsOfOthers = nullptr)
      : owner(std::move(donations)), reasons(reasonsOfOthers), visitedValues(expectedVisits) {
    visited.reserve(expectedVisits);
  }

  // Prepares for a visit that comes soon.
  void expect(const DonationValue& donation) const {
    visitedValues.prefetch(donation.contentKey());
  }

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
  // Whose value each component of the card's name is, in the order of nameComponentsByKey; null for
  // none.
  using NameDonors = std::array<const DonationValue*, nameComponentsByKey.size()>;

  void visitEntry(const DonationValue& donation, Entries& entries);
  void fillName();
  void noteOverwrittenNames(const NameDonors& former, const DonationValue& latest);

  const std::shared_ptr<const DonationValues> owner;
  CardReasons* const reasons;
  // The entries with a key that the card has so far, and where they stand.
  Entries visited;
  KeyIndex visitedValues;
  MutableContact contact;
  NameDonors nameDonors = {};
  const DonationValue* imageDonor = nullptr;
  Entries emailAddresses;
  Entries phoneNumbers;
  Entries postalAddresses;
};

}  // namespace quenlet
