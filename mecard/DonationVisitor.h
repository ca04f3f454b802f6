#pragma once

#include <string_view>
#include <unordered_set>

#include "model/DonationValueVisitor.h"
#include "platform/contacts/Contact.h"

namespace quenlet {

// Fills one contact from the records that it visits, which must outlive it. Lives for one
// ContactBuilder::build().
//
// One set of keys finds duplicates among e-mail addresses, phone numbers and postal addresses
// alike. Keys are the records' own, so that a visit makes no text.
class DonationVisitor final : public DonationValueVisitor {
 public:
  explicit DonationVisitor(std::size_t expectedDonations) {
    visitedValues.reserve(expectedDonations);
  }

  [[nodiscard]] Contact takeContact() && { return std::move(contact).contact(); }

  void visitDonationValue(const DonationValue& donation,
                          const PersonNameComponents& nameComponents) override;
  void visitDonationValue(const DonationValue& donation, const std::string& emailAddress,
                          const std::string& label) override;
  void visitDonationValue(const DonationValue& donation, const PhoneNumber& phoneNumber,
                          const std::string& label) override;
  void visitDonationValue(const DonationValue& donation, const PostalAddress& postalAddress,
                          PostalAddressStyle style, const std::string& label) override;
  void visitDonationValue(const DonationValue& donation,
                          const std::shared_ptr<const std::string>& imageData) override;

 private:
  // Whether an entry with that record's key has not been visited before; an entry without a key
  // never has.
  [[nodiscard]] bool isFirstVisit(const DonationValue& donation);

  MutableContact contact;
  std::unordered_set<std::string_view> visitedValues;
};

}  // namespace quenlet
