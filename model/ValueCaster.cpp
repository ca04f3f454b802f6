#include "model/ValueCaster.h"

#include "model/DonationValue.h"

namespace quenlet {

ValueCaster::ValueCaster(const DonationValue& donation) {
  donation.acceptDonationValueVisitor(*this);
}

void ValueCaster::visitDonationValue(const DonationValue&,
                                     const PersonNameComponents& nameComponents) {
  value = Value::name(nameComponents);
}

void ValueCaster::visitDonationValue(const DonationValue&, const std::string& emailAddress,
                                     const std::string& label) {
  value = Value::emailAddress(emailAddress, label);
}

void ValueCaster::visitDonationValue(const DonationValue&, const PhoneNumber& phoneNumber,
                                     const std::string& label) {
  value = Value::phoneNumber(phoneNumber.stringValue(), label);
}

void ValueCaster::visitDonationValue(const DonationValue&, const PostalAddress& postalAddress,
                                     PostalAddressStyle style, const std::string& label) {
  value = Value::postalAddress(postalAddress, style, label);
}

void ValueCaster::visitDonationValue(const DonationValue&,
                                     const std::shared_ptr<const std::string>& imageData) {
  value = Value::imageData(imageData);
}

}  // namespace quenlet
