#include "model/ValueCaster.h"

#include "model/DonationValue.h"

namespace quenlet {

ValueCaster::ValueCaster(const DonationValue& donation) {
  donation.acceptDonationValueVisitor(*this);
}

void ValueCaster::visitDonationValue(const DonationValue&,
                                     const PersonNameComponents& nameComponents) {
  cast = Value::name(nameComponents);
}

void ValueCaster::visitDonationValue(const DonationValue&, const std::string& emailAddress,
                                     const std::string& label) {
  cast = Value::emailAddress(emailAddress, label);
}

void ValueCaster::visitDonationValue(const DonationValue&, const PhoneNumber& phoneNumber,
                                     const std::string& label) {
  cast = Value::phoneNumber(phoneNumber.stringValue(), label);
}

void ValueCaster::visitDonationValue(const DonationValue&, const PostalAddress& postalAddress,
                                     PostalAddressStyle style, const std::string& label) {
  cast = Value::postalAddress(postalAddress, style, label);
}

void ValueCaster::visitDonationValue(const DonationValue&,
                                     const std::shared_ptr<const std::string>& imageData) {
  cast = Value::imageData(imageData);
}

}  // namespace quenlet
