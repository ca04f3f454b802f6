#include "mecard/DonationVisitor.h"

#include <bit>

namespace quenlet {
namespace {

void overwrite(std::string& field, const std::optional<std::string>& component) {
  // The last donor of a component wins; one that leaves it out takes nothing away.
  if (component) field = *component;
}

std::shared_ptr<const LabeledValue<std::string>> entryOf(const DonationValue& donation,
                                                         const std::string*) {
  return donation.emailEntry();
}
std::shared_ptr<const LabeledValue<PhoneNumber>> entryOf(const DonationValue& donation,
                                                         const PhoneNumber*) {
  return donation.phoneEntry();
}
std::shared_ptr<const LabeledValue<PostalAddress>> entryOf(const DonationValue& donation,
                                                           const PostalAddress*) {
  return donation.postalEntry();
}

// Entries of one kind, each parsed from its donation when it is read.
template <typename T>
class DonatedEntries final : public EntriesOnDemand<T> {
 public:
  DonatedEntries(std::shared_ptr<const DonationValues> owner,
                 std::vector<const DonationValue*> donatedEntries)
      : donations(std::move(owner)), entries(std::move(donatedEntries)) {}

  std::size_t size() const override { return entries.size(); }
  std::shared_ptr<const LabeledValue<T>> entryAt(std::size_t place) const override {
    return entryOf(*entries[place], static_cast<const T*>(nullptr));
  }

 private:
  std::shared_ptr<const DonationValues> donations;
  std::vector<const DonationValue*> entries;
};

template <typename T>
LabeledValues<T> listOf(const std::shared_ptr<const DonationValues>& donations,
                        std::vector<const DonationValue*> entries) {
  if (entries.empty()) return {};
  entries.shrink_to_fit();
  return LabeledValues<T>(std::make_shared<const DonatedEntries<T>>(donations, std::move(entries)));
}

}  // namespace

VisitedKeys::VisitedKeys(std::size_t expectedKeys) : slots(std::bit_ceil(expectedKeys * 2 + 1)) {}

bool VisitedKeys::add(const DonationValues& donations, std::uint32_t place) {
  const ComparisonKey key = *donations[place]->entryKey();
  std::size_t position = key.hash & (slots.size() - 1);
  // Ends, as at least half of the slots stay free.
  while (slots[position].placeAndOne != 0) {
    const Slot& slot = slots[position];
    if (slot.hash == key.hash && donations[slot.placeAndOne - 1]->entryKey() == key) return false;
    position = (position + 1) & (slots.size() - 1);
  }
  slots[position] = {key.hash, place + 1};
  return true;
}

DonationVisitor::DonationVisitor(std::shared_ptr<const DonationValues> donations,
                                 std::size_t expectedVisits)
    : visited(std::move(donations)), visitedValues(expectedVisits) {}

void DonationVisitor::visit(std::uint32_t place) {
  const DonationValue& donation = *(*visited)[place];
  switch (donation.kind()) {
    case DonationKind::name:
      visitNameComponents(donation);
      break;
    case DonationKind::emailAddress:
      visitEntry(place, donation, emailAddresses);
      break;
    case DonationKind::phoneNumber:
      visitEntry(place, donation, phoneNumbers);
      break;
    case DonationKind::postalAddress:
      visitEntry(place, donation, postalAddresses);
      break;
    case DonationKind::imageData:
      contact.mutableFields().imageData = donation.imageData();
      break;
  }
}

void DonationVisitor::visitEntry(std::uint32_t place, const DonationValue& donation,
                                 Entries& entries) {
  // An entry without a key has no duplicate.
  if (!donation.entryKey() || visitedValues.add(*visited, place)) entries.push_back(&donation);
}

void DonationVisitor::visitNameComponents(const DonationValue& donation) {
  const PersonNameComponents components = *donation.nameComponents();
  ContactFields& fields = contact.mutableFields();
  overwrite(fields.namePrefix, components.namePrefix);
  overwrite(fields.givenName, components.givenName);
  overwrite(fields.middleName, components.middleName);
  overwrite(fields.familyName, components.familyName);
  overwrite(fields.nameSuffix, components.nameSuffix);
  overwrite(fields.nickname, components.nickname);
}

Contact DonationVisitor::takeContact() && {
  ContactFields& fields = contact.mutableFields();
  fields.emailAddresses = listOf<std::string>(visited, std::move(emailAddresses));
  fields.phoneNumbers = listOf<PhoneNumber>(visited, std::move(phoneNumbers));
  fields.postalAddresses = listOf<PostalAddress>(visited, std::move(postalAddresses));
  return std::move(contact).contact();
}

}  // namespace quenlet
