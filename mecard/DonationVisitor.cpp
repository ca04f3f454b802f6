#include "mecard/DonationVisitor.h"

#include <utility>

#include "mecard/DonatedEntries.h"

namespace quenlet {
namespace {

void overwrite(std::string& field, const std::optional<std::string>& component) {
  // The last donor of a component wins; one that leaves it out takes nothing away.
  if (component) field = *component;
}

}  // namespace

void DonationVisitor::visitEntry(const DonationValue& donation, Entries& entries) {
  const Fingerprint& key = donation.contentKey();
  // An entry without a key has no duplicate.
  if (!key) return entries.push_back(&donation);
  const auto keyAt = [this](std::size_t place) { return visited[place]->contentKey(); };
  const std::size_t next = visited.size();
  if (visitedValues.findOrAdd(key, next, keyAt) != next) return;
  visited.push_back(&donation);
  entries.push_back(&donation);
}

void DonationVisitor::visitNameComponents(const DonationValue& donation) {
  const DecodedDonation decoded = donation.decoded();
  const auto& components = std::get<PersonNameComponents>(decoded.content);
  ContactFields& fields = contact.mutableFields();
  overwrite(fields.namePrefix, components.namePrefix);
  overwrite(fields.givenName, components.givenName);
  overwrite(fields.middleName, components.middleName);
  overwrite(fields.familyName, components.familyName);
  overwrite(fields.nameSuffix, components.nameSuffix);
  overwrite(fields.nickname, components.nickname);
}

void DonationVisitor::visitImageData(const DonationValue& donation) {
  const DecodedDonation decoded = donation.decoded();
  contact.mutableFields().imageData = std::get<Value::ImageData>(decoded.content).bytes;
}

Contact DonationVisitor::takeContact() && {
  ContactFields& fields = contact.mutableFields();
  fields.emailAddresses = entriesOf<std::string>(owner, std::move(emailAddresses));
  fields.phoneNumbers = entriesOf<PhoneNumber>(owner, std::move(phoneNumbers));
  fields.postalAddresses = entriesOf<PostalAddress>(owner, std::move(postalAddresses));
  return std::move(contact).contact();
}

}  // namespace quenlet
