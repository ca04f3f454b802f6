#pragma once

#include <string>
#include <unordered_set>
#include <vector>

#include "model/DonationValue.h"

namespace quenlet {

// Collects the donations that do not repeat one of the owner's curated e-mail addresses. Lives for
// one rebuild; one thread at a time.
//
// The curated addresses are taken under all aliases of their domains, in normal form; a donated
// address is looked up as it was donated, so that another letter case of a curated address stays.
class EmailAddressCollector final : public DonationValueVisitor {
 public:
  explicit EmailAddressCollector(const std::vector<std::string>& blacklistedEmailAddresses);

  // Appends `donation` to the collected ones unless it is a blacklisted address.
  void visit(const DonationValue& donation);

  [[nodiscard]] const DonationValues& donations() const { return collected; }
  [[nodiscard]] DonationValues takeDonations() && { return std::move(collected); }

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
  DonationValues collected;
  std::unordered_set<std::string> blacklist;
};

}  // namespace quenlet
