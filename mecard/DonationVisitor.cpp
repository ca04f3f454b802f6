#include "mecard/DonationVisitor.h"

#include <algorithm>
#include <utility>

#include "mecard/DonatedEntries.h"

namespace quenlet {

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
  const DecodedDonation decoded = donation.decoded();
  const auto& components = std::get<PersonNameComponents>(decoded.content);
  ContactFields& fields = contact.mutableFields();
  const NameDonors former = nameDonors;
  auto donor = nameDonors.begin();
  // The last donor of a component wins; one that leaves it out takes nothing away.
  const auto overwrite = [&](std::string& field, const std::optional<std::string>& component) {
    if (component) {
      field = *component;
      *donor = &donation;
    }
    ++donor;
  };
  overwrite(fields.namePrefix, components.namePrefix);
  overwrite(fields.givenName, components.givenName);
  overwrite(fields.middleName, components.middleName);
  overwrite(fields.familyName, components.familyName);
  overwrite(fields.nameSuffix, components.nameSuffix);
  overwrite(fields.nickname, components.nickname);
  if (reasons) noteOverwrittenNames(former, donation);
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
  ContactFields& fields = contact.mutableFields();
  fields.emailAddresses = entriesOf<std::string>(owner, std::move(emailAddresses));
  fields.phoneNumbers = entriesOf<PhoneNumber>(owner, std::move(phoneNumbers));
  fields.postalAddresses = entriesOf<PostalAddress>(owner, std::move(postalAddresses));
  return std::move(contact).contact();
}

}  // namespace quenlet
