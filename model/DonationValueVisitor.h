#pragma once

#include <memory>
#include <string>

#include "platform/contacts/PersonNameComponents.h"
#include "platform/contacts/PhoneNumber.h"
#include "platform/contacts/PostalAddress.h"

namespace quenlet {

class DonationValue;

// One operation per kind of donated value; DonationValue::acceptDonationValueVisitor() calls
// exactly one of them. Arguments are good for the call.
class DonationValueVisitor {
 public:
  virtual ~DonationValueVisitor() = default;
  virtual void visitDonationValue(const DonationValue& donation,
                                  const PersonNameComponents& nameComponents) = 0;
  virtual void visitDonationValue(const DonationValue& donation, const std::string& emailAddress,
                                  const std::string& label) = 0;
  virtual void visitDonationValue(const DonationValue& donation, const PhoneNumber& phoneNumber,
                                  const std::string& label) = 0;
  virtual void visitDonationValue(const DonationValue& donation, const PostalAddress& postalAddress,
                                  PostalAddressStyle style, const std::string& label) = 0;
  virtual void visitDonationValue(const DonationValue& donation,
                                  const std::shared_ptr<const std::string>& imageData) = 0;
};

}  // namespace quenlet
