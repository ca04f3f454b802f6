#include "mecard/DonationVisitor.h"

#include <algorithm>
#include <utility>

#include "mecard/DonatedEntries.h"

namespace quenlet {
namespace {

// In the order of nameComponentsByKey.
constexpr std::array<std::string ContactFields::*, nameComponentsByKey.size()> nameFields = {
    &ContactFields::familyName, &ContactFields::givenName,  &ContactFields::middleName,
    &ContactFields::namePrefix, &ContactFields::nameSuffix, &ContactFields::nickname};

}  // namespace

void DonationVisitor::visitEntry(const DonationValue& donation, Entries& entries) {
  const Fingerprint& key = donation.contentKey();
  // An entry without a key has no duplicate.
  if (!key) return entries.push_back(&donation);
  const auto keyAt = [this](std::size_t place) { return visited[place]->contentKey(); };
  const std::size_t next = visited.size();
  const std::size_t first = visitedValues.findOrAdd(key, next, keyAt);
  if (first != next) {
    if (reasons) reasons->note(donation, {CardDecision::givenBefore, visited[first]});
    return;
  }
  visited.push_back(&donation);
  entries.push_back(&donation);
}

void DonationVisitor::visitNameComponents(const DonationValue& donation) {
  const NameDonors former = nameDonors;
  // The last donor of a component wins; one that leaves it out takes nothing away.
  for (std::size_t part = 0; part < nameDonors.size(); ++part) {
    if ((donation.nameParts() >> part & 1) != 0) nameDonors[part] = &donation;
  }
  if (reasons) noteOverwrittenNames(former, donation);
}

void DonationVisitor::fillName() {
  // Most cards have their whole name from one donor.
  const DonationValue* lastDonor = nullptr;
  PersonNameComponents components;
  for (std::size_t part = 0; part < nameDonors.size(); ++part) {
    if (!nameDonors[part]) continue;
    if (std::exchange(lastDonor, nameDonors[part]) != nameDonors[part]) {
      components = std::get<PersonNameComponents>(nameDonors[part]->decoded().content);
    }
    contact.mutableFields().*nameFields[part] = *(components.*nameComponentsByKey[part].second);
  }
}

void DonationVisitor::noteOverwrittenNames(const NameDonors& former, const DonationValue& latest) {
  const auto isOnCard = [this](const DonationValue* donor) {
    return std::find(nameDonors.begin(), nameDonors.end(), donor) != nameDonors.end();
  };
  if (!isOnCard(&latest)) return reasons->note(latest, {CardDecision::hasNothing});
  for (const DonationValue* donor : former) {
    if (donor && !isOnCard(donor)) reasons->note(*donor, {CardDecision::givenAgain, &latest});
  }
}

void DonationVisitor::visitImageData(const DonationValue& donation) {
  const DecodedDonation decoded = donation.decoded();
  contact.mutableFields().imageData = std::get<Value::ImageData>(decoded.content).bytes;
  if (reasons && imageDonor) reasons->note(*imageDonor, {CardDecision::givenAgain, &donation});
  imageDonor = &donation;
}

Contact DonationVisitor::takeContact() && {
  fillName();
  ContactFields& fields = contact.mutableFields();
  fields.emailAddresses = entriesOf<std::string>(owner, std::move(emailAddresses));
  fields.phoneNumbers = entriesOf<PhoneNumber>(owner, std::move(phoneNumbers));
  fields.postalAddresses = entriesOf<PostalAddress>(owner, std::move(postalAddresses));
  return std::move(contact).contact();
}

}  // namespace quenlet
