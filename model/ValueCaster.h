#pragma once

#include <optional>

#include "model/DonationValueVisitor.h"
#include "model/Value.h"

namespace quenlet {

// Turns a record into the closed enumeration of kinds, by visiting it. Lives for one cast, on one
// thread.
class ValueCaster final : public DonationValueVisitor {
 public:
  explicit ValueCaster(const DonationValue& donation);

  // The content of the kind that was visited; every record visits exactly one.
  std::optional<Value> value;

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
};

}  // namespace quenlet
