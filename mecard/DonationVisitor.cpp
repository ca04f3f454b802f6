#include "mecard/DonationVisitor.h"

#include "model/DonationValue.h"

namespace quenlet {
namespace {

void overwrite(std::string& field, const std::optional<std::string>& component) {
  if (component) field = *component;
}

}  // namespace

bool DonationVisitor::isFirstVisit(const DonationValue& donation) {
  const std::optional<std::string>& key = donation.keys().entry;
  return !key || visitedValues.insert(*key).second;
}

void DonationVisitor::visitDonationValue(const DonationValue&,
                                         const PersonNameComponents& nameComponents) {
  ContactFields& fields = contact.mutableFields();
  overwrite(fields.namePrefix, nameComponents.namePrefix);
  overwrite(fields.givenName, nameComponents.givenName);
  overwrite(fields.middleName, nameComponents.middleName);
  overwrite(fields.familyName, nameComponents.familyName);
  overwrite(fields.nameSuffix, nameComponents.nameSuffix);
  overwrite(fields.nickname, nameComponents.nickname);
}

void DonationVisitor::visitDonationValue(const DonationValue& donation, const std::string&,
                                         const std::string&) {
  if (!isFirstVisit(donation)) return;
  contact.mutableFields().emailAddresses.push_back(donation.emailEntry());
}

void DonationVisitor::visitDonationValue(const DonationValue& donation, const PhoneNumber&,
                                         const std::string&) {
  if (!isFirstVisit(donation)) return;
  contact.mutableFields().phoneNumbers.push_back(donation.phoneEntry());
}

void DonationVisitor::visitDonationValue(const DonationValue& donation, const PostalAddress&,
                                         PostalAddressStyle, const std::string&) {
  if (!isFirstVisit(donation)) return;
  contact.mutableFields().postalAddresses.push_back(donation.postalEntry());
}

void DonationVisitor::visitDonationValue(const DonationValue&,
                                         const std::shared_ptr<const std::string>& imageData) {
  contact.mutableFields().imageData = imageData;
}

}  // namespace quenlet
