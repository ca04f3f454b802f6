#include "analytics/MeCardClassifier.h"

namespace quenlet {

const std::vector<KeyDescriptor>& MeCardClassifier::descriptors() {
  static const std::vector<KeyDescriptor> keys = {ContactGivenNameKey, ContactFamilyNameKey,
                                                  ContactEmailAddressesKey, ContactPhoneNumbersKey,
                                                  ContactPostalAddressesKey};
  return keys;
}

bool MeCardClassifier::hasNameFieldsWithContact(const Contact& contact) const {
  return !contact.givenName().empty() || !contact.familyName().empty();
}

MeCardStatus MeCardClassifier::classifyMeCard(const Contact* contact) const {
  if (!contact) return MeCardStatus::none();
  MeCardFields fields;
  if (hasNameFieldsWithContact(*contact)) fields.insert(MeCardFields::nameComponents);
  if (!contact->emailAddresses().empty()) fields.insert(MeCardFields::emailAddresses);
  if (!contact->phoneNumbers().empty()) fields.insert(MeCardFields::phoneNumbers);
  if (!contact->postalAddresses().empty()) fields.insert(MeCardFields::postalAddresses);
  return MeCardStatus::present(fields);
}

}  // namespace quenlet
